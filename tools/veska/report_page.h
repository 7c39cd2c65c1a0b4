// The page that shows a management file: one HTML document that needs nothing else.
#pragma once

#include <veska/CVMGInfo.h>

#include <span>
#include <string>

namespace veska_tool {

/// The report of the file `name`, whose bytes were loaded into `info`. A `field_rate` of 0 is
/// guessed, and the page says how. Long lists are cut, and the page says where.
std::string ReportPage(const std::string& name, std::span<const unsigned char> bytes,
                       VESKA::CVMGInfo& info, double field_rate);

}  // namespace veska_tool
