#include <veska/CVMGInfo.h>

#include <algorithm>
#include <vector>

#include "check/examined.h"

namespace VESKA::workshop {
namespace {

using Image = std::vector<unsigned char>;

bool Loads(CVMGInfo& info, Image& image, unsigned char flags) {
  return info.LoadFromMemory(image.data(), static_cast<unsigned long>(image.size()), flags);
}

/// The image with every other table that is always loaded made empty.
Image OnlyTable(std::span<const unsigned char> bytes, Table table) {
  Image image(bytes.begin(), bytes.end());
  std::copy(kFileIdentifier.begin(), kFileIdentifier.end(), image.begin());
  constexpr std::size_t kPlayLists = kFileSize<tag_VMGI_MAT_HEADER>;
  if (table != Table::kPlayLists) {
    image.resize(std::max(image.size(), kPlayLists + kFileSize<tag_PL_SRPTI>));
    image[kPlayLists + offsetof(tag_PL_SRPTI, PL_SRP_Ns)] = 0;
  }
  if (table != Table::kOriginalChain) {
    const std::size_t end = image.size();
    image.resize(end + kFileSize<tag_PGC_GI>);
    SetBigEndian(&image[offsetof(tag_VMGI_MAT_HEADER, ORG_PGCI_SA)],
                 sizeof(tag_VMGI_MAT_HEADER::ORG_PGCI_SA), end);
  }
  return image;
}

void ReportWhatDoesNotLoad(Examined& file, CVMGInfo& info) {
  for (const TableInfo& row : kTables) {
    if (row.table < Table::kPlayLists) continue;
    Image only = OnlyTable(file.bytes, row.table);
    if (Loads(info, only, row.flag)) continue;
    const Finding* cause = file.findings.FirstError(row.table);
    file.findings.Add(
        {Code::kDoesNotLoad, row.table, PointerOf(row.table), cause != nullptr ? cause->offset : 0,
         cause != nullptr ? InWords(cause->pointer) + ": " + EntryOf(cause->code).title
                          : "it needs more memory than its size allows",
         ""});
  }
  if (file.findings.Count(Severity::kError) != 0) return;
  file.findings.Add({Code::kDoesNotLoad, Table::kFile, PointerOf(Table::kFile), 0,
                     "all tables together need more memory than the file's size allows", ""});
}

/// What completing would make of the header of a file that loads.
void CheckCompleting(Examined& file, CVMGInfo& info) {
  info.AutoComplete();
  Image image(info.GetDataSize());
  info.GetData(image.data());
  const ImageBytes completed(image);
  const Structure& header = file.map.structures.front();
  for (const Field& field : InfoOf(header.part).fields) {
    if (field.kind != FieldKind::kDerived) continue;
    const std::uint64_t stands = file.image.Number(field.offset, field.width);
    const std::uint64_t right = completed.Number(field.offset, field.width);
    if (stands == right) continue;
    file.Report(Code::kCompletingChanges, header, field.offset,
                std::string(field.name) + " is " + std::to_string(stands), std::to_string(right));
  }
}

}  // namespace

void CheckLoading(Examined& file) {
  CVMGInfo info;
  Image image(file.bytes.begin(), file.bytes.end());
  file.loads = Loads(info, image, CVMGInfo::kLoadAll);
  if (!file.loads) {
    if (file.bytes.size() >= kFileSize<tag_VMGI_MAT_HEADER>) ReportWhatDoesNotLoad(file, info);
  } else if (file.findings.Count(Severity::kError) == 0) {
    CheckCompleting(file, info);
  }
}

}  // namespace VESKA::workshop
