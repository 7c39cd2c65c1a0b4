// The page: one HTML document that needs nothing else.
#include <veska/workshop/load.h>

#include "report/facts.h"
#include "report/html.h"
#include "report/numbers.h"
#include "report/style.h"

namespace VESKA::workshop {
namespace {

constexpr std::size_t kLongestName = 255;

std::string Start(const Facts& facts) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(facts.name.data());
  const std::string name = DiscText({bytes, facts.name.size()}, kLongestName, DecodeUtf8);
  const std::string text = DiscText(facts.info.GetMAT().GetHeader().text_93, 128, facts.decode);
  return R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
<meta http-equiv="Content-Security-Policy"
  content="default-src 'none'; style-src 'unsafe-inline'; img-src data:">
<link rel="icon" href="data:,">
<title>)" +
         name + "</title>\n<style>" + kReportStyle + R"(</style>
</head>
<body>
<header>
<p class="kind">Management file of a DVD Video Recording disc</p>
<h1>)" + name +
         "</h1>\n" + (text.empty() ? "" : "<p class=\"lead\">" + text + "</p>\n");
}

/// The numbers at the top.
std::string Numbers(const Facts& facts) {
  std::string list;
  const auto add = [&](const char* what, const std::string& value) {
    list += std::string("<div><dt>") + what + "</dt><dd>" + value + "</dd></div>\n";
  };
  double seconds = 0;
  std::uint64_t bytes = 0;
  for (const Bitrate& bitrate : facts.bitrates) {
    seconds += bitrate.seconds;
    bytes += bitrate.bytes;
  }
  add("Programs", Grouped(facts.Chain().GetPGCount()));
  add("Cells", Grouped(facts.Chain().GetCellCount()));
  add("Play lists", Grouped(facts.PlayLists().GetCount()));
  add("User-defined chains", Grouped(facts.info.GetUserPGCTable().GetCount()));
  add("Movie VOBs", Grouped(facts.Vobs().GetCount()));
  if (!facts.bitrates.empty()) {
    add("Playing time of the VOBs", DurationText(seconds));
    add("Size of the VOBs", SizeText(bytes));
  }
  add("Still groups", Grouped(facts.Groups().GetCount()));
  add("Size of this file", SizeText(facts.bytes.size()));
  return "<dl>\n" + list + "</dl>\n</header>\n<main>\n";
}

constexpr char kEnd[] = R"(</main>
<footer class="note">Made by veska. Programs, cells, play lists, chains and VOBs are numbered from
1. Texts are shown as the disc has them, with \xNN for bytes that are not UTF-8.</footer>
</body>
</html>
)";

}  // namespace

std::string Report(std::string_view name, std::span<const unsigned char> bytes,
                   const ReportOptions& options) {
  const auto info = Load(bytes);
  Findings findings(0);
  const CMovieAVFile& vobs = info->GetMovieAVFileTable().GetMovieAVFile();
  const Rate rate = RateOf(vobs, options.field_rate);
  const Facts facts{name,          bytes,
                    *info,         MapImage(bytes, findings),
                    rate,          BitratesOf(vobs, rate.fields_per_second),
                    options.decode};
  return Start(facts) + Numbers(facts) + FileMapSection(facts) + OriginalChainSection(facts) +
         PlayListSection(facts) + UserChainSection(facts) + BitrateSection(facts) +
         StillSection(facts) + kEnd;
}

}  // namespace VESKA::workshop
