// What differs between two management files.
#pragma once

#include <veska/CVMGInfo.h>

#include <iosfwd>

namespace veska_tool {

/// Prints a line for each field that differs, and for each record that only one of both has. What
/// AutoComplete derives is looked at only when all else is equal, or for `derived`.
/// Returns true when something differs.
bool PrintDifferences(VESKA::CVMGInfo& a, VESKA::CVMGInfo& b, bool derived, std::ostream& out);

}  // namespace veska_tool
