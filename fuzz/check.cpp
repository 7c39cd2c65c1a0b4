// An examination of any bytes, which agrees with the library.

#include <veska/workshop/check.h>
#include <veska/workshop/load.h>

#include <memory>

#include "edit_script.h"

namespace {

using namespace VESKA::workshop;

/// What is true of every file in which no error is found.
void RequireSound(const Examination& examination, std::span<const unsigned char> bytes) {
  fuzz::Require(examination.loads);
  const auto info = Load(bytes);
  info->AutoComplete();
  const Bytes saved = ImageOf(*info);
  const bool is_canonical =
      saved.size() == bytes.size() && std::equal(saved.begin(), saved.end(), bytes.begin());
  fuzz::Require(is_canonical || !examination.findings.empty());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::span bytes(data, size);
  const Examination examination = Check(bytes);
  VESKA::CVMGInfo info;
  fuzz::Require(examination.loads == info.LoadFromMemory(const_cast<unsigned char*>(data),
                                                         static_cast<unsigned long>(size),
                                                         VESKA::CVMGInfo::kLoadAll));
  fuzz::Require(examination.loads || examination.errors != 0);
  fuzz::Require(examination.tables.size() == 8);
  for (const TableSummary& table : examination.tables) fuzz::Require(table.readable <= table.items);
  for (const Finding& finding : examination.findings) {
    fuzz::Require(finding.table == Table::kFile ||
                  finding.pointer.starts_with(std::string("/") + NameOf(finding.table)));
  }
  if (examination.errors == 0) RequireSound(examination, bytes);
  fuzz::Require(!ToText(examination, "file").empty());
  const NamedExamination named{"file", examination};
  fuzz::Require(ToJson({&named, 1}).ends_with("}\n"));
  return 0;
}
