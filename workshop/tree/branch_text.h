// What the branches of the tree of fields say of themselves.
#pragma once

#include <veska/CVMGInfo.h>
#include <veska/workshop/text.h>

#include <span>
#include <string>

#include "basis/fields.h"
#include "tree/walk.h"

namespace VESKA::workshop {

/// The value of a field, on one line; a text in the character set of the disc.
std::string BranchText(const Record& record, const Field& field, Positions positions,
                       const CVMGInfo& info, const DecodeText& decode);

/// A block of bytes: a text where it is one, else hex; what is long is cut.
std::string BlockText(std::span<const unsigned char> bytes, const DecodeText& decode);

/// True when `text` has `part`, which is in lower case, whatever the case of its ASCII letters.
bool HasPart(std::string_view text, std::string_view part);
std::string LowerCase(std::string_view text);

}  // namespace VESKA::workshop
