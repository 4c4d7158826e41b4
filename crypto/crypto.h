#pragma once

/// Front header of crypto: everything of the module that clients use.

#include "crypto/base/constant_time.h"
#include "crypto/base/cpu_features.h"
#include "crypto/cipher/cipher.h"
#include "crypto/cipher/gcm.h"
#include "crypto/cipher/key_wrap.h"
#include "crypto/dsa/dsa.h"
#include "crypto/ec/curve_point.h"
#include "crypto/ec/ec.h"
#include "crypto/ec/eddsa.h"
#include "crypto/hash/hash.h"
#include "crypto/hash/shake.h"
#include "crypto/kdf/key_derivation.h"
#include "crypto/mac/cmac.h"
#include "crypto/mac/hmac.h"
#include "crypto/mac/mac.h"
#include "crypto/mac/retail_mac.h"
#include "crypto/random/random.h"
#include "crypto/rsa/rsa.h"
