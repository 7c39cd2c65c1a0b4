// The values of fields and bytes as text for people.
#pragma once

#include <veska/CVMGInfo.h>
#include <veska/layouts.h>

#include <cstdint>
#include <span>
#include <string>

#include "basis/fields.h"

namespace VESKA::workshop {

/// The value of a field. A cell point names a cell of `chain`; with `raw_positions` its position is
/// bytes whatever the cell is, as in user-defined program chains.
std::string FieldText(const Record& record, const Field& field, const CPGCInfo& chain,
                      bool raw_positions = false);

}  // namespace VESKA::workshop
