/// A management file as JSON, both ways.
#pragma once

#include <veska/CVMGInfo.h>

#include <memory>
#include <string>
#include <string_view>

#include "veska/workshop/error.h"

namespace VESKA::workshop {

/// How a document is laid out. The values are for good.
enum class JsonForm : int {
  kPretty = 0,  ///< a line for each value that fits one, two blanks deeper a level
  kLine = 1     ///< all on one line
};

/// The JSON document of an object: every byte of its records but what CVMGInfo::AutoComplete
/// derives. It is ASCII and ends with a line end. `file`, in UTF-8, is named in the document unless
/// it is empty. Takes time and memory in proportion to the object.
VESKA_WORKSHOP_API std::string ToJson(const CVMGInfo& info, JsonForm form = JsonForm::kPretty,
                                      std::string_view file = {});

/// The object that a JSON document in UTF-8 describes, completed. Throws Error (kDocument) at the
/// first mistake: its place is the JSON pointer of it, or empty where the text is no JSON. Takes
/// time and memory in proportion to the text. Whether the format can hold the object, ImageOf
/// tells.
VESKA_WORKSHOP_API std::unique_ptr<CVMGInfo> FromJson(std::string_view text);

/// The JSON Schema (2020-12) of these documents, as a text with a line end.
VESKA_WORKSHOP_API std::string JsonSchema();

}  // namespace VESKA::workshop
