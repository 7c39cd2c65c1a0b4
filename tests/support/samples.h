// The samples that tests read.
#pragma once

#include <string>

inline std::string SamplePath(const std::string& name, const char* ending = ".ifo") {
  return std::string(VESKA_SAMPLES) + "/" + name + ending;
}
