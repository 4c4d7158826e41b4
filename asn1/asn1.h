#pragma once

/// Front header of asn1: everything of the module that clients use.

#include "asn1/der/ber_tlv.h"
#include "asn1/der/der_cursor.h"
#include "asn1/der/der_parser.h"
#include "asn1/der/object_identifier.h"
#include "asn1/der/pem.h"
#include "asn1/oid/oid_names.h"
#include "asn1/parser/parser.h"
#include "asn1/tree/element_node.h"
#include "asn1/types/algorithm_identifier.h"
#include "asn1/types/algorithm_table.h"
#include "asn1/types/asn1_collections.h"
#include "asn1/types/asn1_object.h"
#include "asn1/types/asn1_values.h"
#include "asn1/types/bit_string.h"
#include "asn1/types/oid.h"
