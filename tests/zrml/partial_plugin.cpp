// A library that lacks one of a plug-in's exports.
#include "plugin/provider_table.h"
#include "tests/zrml/plugin_exports.h"

ZRML_EXPORT bool CheckVersion(int version) { return version == zrml::kInterfaceVersion; }
ZRML_EXPORT int GetInterfaceCount() { return 1; }
