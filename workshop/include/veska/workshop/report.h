/// A management file drawn as a web page.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "veska/workshop/error.h"
#include "veska/workshop/text.h"

namespace VESKA::workshop {

/// The video fields a second of a disc, which no field of the file says. The values are for good.
enum class FieldRate : int {
  kGuessed = 0,  ///< told from the clock values of the VOBs; 59.94 where they fit neither
  k50 = 50,
  k59_94 = 60  ///< 60 / 1.001
};

/// What a report is made by.
struct ReportOptions {
  /// What the bitrates are counted with.
  FieldRate field_rate = FieldRate::kGuessed;
  /// By which texts of the disc are shown.
  DecodeText decode = DecodeUtf8;
};

/// One HTML document in UTF-8 that needs nothing else, no script and no network: a map of the file,
/// its programs and cells to scale, the play lists, and the bitrate of each movie VOB over time.
///
/// `name` is what the page calls the file. It and all texts of the disc stand in the page as text,
/// whatever bytes they hold. Long lists and texts are cut, and the page says where. Keeps nothing
/// of `bytes`. Throws Error (kFile) where `Load` does. Takes time in proportion to the bytes; the
/// page has less than 6 MB whatever the file holds.
VESKA_WORKSHOP_API std::string Report(std::string_view name, std::span<const unsigned char> bytes,
                                      const ReportOptions& options = {});

}  // namespace VESKA::workshop
