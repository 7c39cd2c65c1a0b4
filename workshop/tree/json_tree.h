// What makes the JSON of a management file, and the file of JSON.
#pragma once

#include <veska/CVMGInfo.h>
#include <veska/workshop/json.h>

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace VESKA::workshop {

/// Keeps its keys in order.
using Json = nlohmann::ordered_json;

inline constexpr int kJsonVersion = 1;
inline constexpr const char* kSchemaName = "veska.schema.json";

/// The tables without what AutoComplete derives, or with it.
Json TreeOf(const VESKA::CVMGInfo& info, bool derived = false);

/// A JSON text with a line end.
std::string TextOf(const Json& document, JsonForm form = JsonForm::kPretty);

/// The object that a document describes, completed. Throws Error with the JSON pointer of a mistake
/// and what was expected there.
std::unique_ptr<CVMGInfo> Build(const Json& document);

/// Reads a JSON text. Throws Error; a key that stands twice is a mistake.
Json ParseJson(std::string_view text);

/// The JSON Schema of the document.
Json Schema();

}  // namespace VESKA::workshop
