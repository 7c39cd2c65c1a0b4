// What differs between a file and what edits made of it.
#pragma once

#include <veska/CVMGInfo.h>
#include <veska/workshop/text.h>

#include <string>
#include <vector>

namespace VESKA::workshop {

/// The differences (veska/workshop/diff.h) but those of the cell points that name no cell any more.
std::vector<std::string> DifferencesOfEdit(const CVMGInfo& before, const CVMGInfo& after,
                                           const DecodeText& decode);

}  // namespace VESKA::workshop
