#pragma once

#include <span>
#include <string_view>

/// The rows of the OID name table, a file for each stretch of arcs: a dotted OID, one blank and its description.
///
/// Rows stand in the order of their bytes, within a table and from each table to the next as declared here: an arc comes right
/// before what is registered under it, and sister arcs follow as texts do ("1.2.10" before "1.2.9"). No OID stands twice.
namespace oid_names {

using Table = std::span<const std::string_view>;

extern const Table itu;
extern const Table countries;
extern const Table us;
extern const Table rsadsi;
extern const Table usCompanies;
extern const Table organisations;
extern const Table internet;
extern const Table enterprises;
extern const Table security;
extern const Table joint;
extern const Table international;
extern const Table directory;

} // namespace oid_names
