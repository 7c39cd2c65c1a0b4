/// What differs between two management files.
#pragma once

#include <veska/CVMGInfo.h>

#include <string>
#include <vector>

#include "veska/workshop/error.h"
#include "veska/workshop/text.h"

namespace VESKA::workshop {

/// One line for each field that differs, and for each record that only one of both has; none when
/// the objects hold the same. Items are numbered from 1, as they stand in `a`; what belongs
/// together in two lists of different length is told by what is equal.
///
/// What CVMGInfo::AutoComplete derives is compared only when all else is equal, or for `derived`.
/// Takes time and memory in proportion to the objects, and to the product of the lengths of two
/// lists of different length up to 4 million; longer ones are compared in order. Texts are shown by
/// `decode`.
VESKA_WORKSHOP_API std::vector<std::string> Differences(const CVMGInfo& a, const CVMGInfo& b,
                                                        bool derived = false,
                                                        const DecodeText& decode = DecodeUtf8);

}  // namespace VESKA::workshop
