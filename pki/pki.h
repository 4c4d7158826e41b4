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
#include "pki/ocsp/ocsp_extensions.h"
#include "pki/ocsp/ocsp_request.h"
#include "pki/ocsp/ocsp_response.h"
#include "pki/ocsp/response_verification.h"
#include "pki/x509/certificate.h"
#include "pki/x509/crl.h"
#include "pki/x509/name.h"
#include "pki/x509/revoked_entries.h"
#include "pki/x509/signature.h"
#include "pki/x509/x509_base.h"
#include "pki/x509/x509_time.h"
#include "pki/x509/x509_value.h"
