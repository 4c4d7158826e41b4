#pragma once

/// Front header of pki: everything of the module that clients use.

#include "pki/keys/ec_key_pair.h"
#include "pki/keys/eddsa_key_pair.h"
#include "pki/keys/key_abilities.h"
#include "pki/keys/key_file.h"
#include "pki/keys/key_pair.h"
#include "pki/keys/password_encryption.h"
#include "pki/keys/pss_limits.h"
#include "pki/keys/rsa_key_pair.h"
