// A management file as JSON, both ways.
#pragma once

#include <veska/CVMGInfo.h>

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "command.h"

namespace veska_tool {

/// Keeps its keys in order.
using Json = nlohmann::ordered_json;

inline constexpr int kJsonVersion = 1;
inline constexpr const char* kSchemaName = "veska.schema.json";

/// The tables without what AutoComplete derives, or with it.
Json TreeOf(VESKA::CVMGInfo& info, bool derived = false);

/// The document that `veska export` writes. `file` names the file in it unless it is empty.
Json Export(VESKA::CVMGInfo& info, const std::string& file = "");

/// A JSON text with a line end: on one line, or with a line for each value that fits one.
std::string LineOf(const Json& document);
std::string TextOf(const Json& document);

/// Makes the object that a document describes and completes it; `info` is to be empty. Throws
/// Failure about `where`, with the JSON pointer of a mistake and what was expected there.
void Build(const Json& document, const std::string& where, VESKA::CVMGInfo& info);

/// Reads a JSON text. Throws Failure about `where`; a key that stands twice is a mistake.
Json ParseJson(const std::string& text, const std::string& where);

/// The JSON Schema of the document.
Json Schema();

}  // namespace veska_tool
