// The values of fields and bytes as text for people.
#pragma once

#include <veska/CVMGInfo.h>
#include <veska/layouts.h>
#include <veska/workshop/text.h>

#include <cstdint>
#include <span>
#include <string>

#include "basis/fields.h"

namespace VESKA::workshop {

/// The value of a field, a text by `decode`. A cell point names a cell of `chain`; with
/// `raw_positions` its position is bytes whatever the cell is, as in user-defined program chains.
std::string FieldText(const Record& record, const Field& field, const CPGCInfo& chain,
                      bool raw_positions, const DecodeText& decode);

}  // namespace VESKA::workshop
