// The values of fields as text for people.
#pragma once

#include <veska/CVMGInfo.h>
#include <veska/workshop/text.h>

#include <string>

#include "basis/fields.h"

namespace VESKA::workshop {

/// The value of a field, a text by `decode`. A cell point names a cell of the original chain or, in
/// a user-defined chain, of that one.
std::string FieldText(const Record& record, const Field& field, const CVMGInfo& info,
                      const CPGCInfo* user_chain, const DecodeText& decode);

}  // namespace VESKA::workshop
