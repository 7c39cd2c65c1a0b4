#include <veska/CVMGInfo.h>

#include <algorithm>
#include <vector>

#include "check/examined.h"

namespace VESKA::workshop {
namespace {

using Image = std::vector<unsigned char>;

bool Loads(CVMGInfo& info, Image& image, unsigned char flags = CVMGInfo::kLoadAll) {
  return info.LoadFromMemory(image.data(), static_cast<unsigned long>(image.size()), flags);
}

/// Makes a table that is always loaded an empty one, which loads.
void MakeEmpty(Image& image, Table table) {
  const std::size_t end = image.size();
  if (table == Table::kPlayLists) {
    constexpr std::size_t kAt = kFileSize<tag_VMGI_MAT_HEADER>;
    image.resize(std::max(end, kAt + kFileSize<tag_PL_SRPTI>));
    image[kAt + offsetof(tag_PL_SRPTI, PL_SRP_Ns)] = 0;
  } else {
    image.resize(end + kFileSize<tag_PGC_GI>);
    SetBigEndian(&image[offsetof(tag_VMGI_MAT_HEADER, ORG_PGCI_SA)],
                 sizeof(tag_VMGI_MAT_HEADER::ORG_PGCI_SA), end);
  }
}

static_assert(static_cast<int>(FailureTable::kManufacturers) ==
              static_cast<int>(Table::kManufacturers));

/// Each table that does not load is found by loading without those before it.
void ReportWhatDoesNotLoad(Examined& file, CVMGInfo& info, Image& image) {
  std::copy(kFileIdentifier.begin(), kFileIdentifier.end(), image.begin());
  unsigned flags = CVMGInfo::kLoadAll;
  for (std::size_t i = 0; i < kTables.size(); ++i) {
    if (Loads(info, image, static_cast<unsigned char>(flags))) return;
    const Failure failure = info.GetFailure();
    const auto table = static_cast<Table>(failure.table);
    const Finding* cause = file.findings.FirstError(table);
    file.findings.Add({Code::kDoesNotLoad, table, PointerOf(table),
                       cause != nullptr ? cause->offset : failure.offset,
                       cause != nullptr
                           ? InWords(cause->pointer) + ": " + EntryOf(cause->code).title
                           : Describe(failure),
                       ""});
    flags &= ~unsigned{InfoOf(table).flag};
    if (InfoOf(table).flag == 0) MakeEmpty(image, table);
  }
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
  file.loads = Loads(info, image);
  if (!file.loads) {
    if (image.size() >= kFileSize<tag_VMGI_MAT_HEADER>) ReportWhatDoesNotLoad(file, info, image);
  } else if (file.findings.Count(Severity::kError) == 0) {
    CheckCompleting(file, info);
  }
}

}  // namespace VESKA::workshop
