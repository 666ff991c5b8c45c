// Everything that a sound source can be asked for through the C library, as one text that can be compared.
#pragma once

#include <string>

#include "zrml/zrml.h"

namespace zrml::test {

/// Asks for all that the source at `path` holds. Statuses other than 0 are in the text; the first one that is
/// ZRML_NO_MEMORY ends it.
struct Answers {
  zrml_status status = ZRML_OK;  ///< of opening, or ZRML_NO_MEMORY
  std::string text;
};
Answers AskEverything(const std::string& path);

}  // namespace zrml::test
