// A plug-in that only supports the next version of the interface.
#include <cstdint>

#include "plugin/provider_table.h"
#include "tests/zrml/plugin_exports.h"

ZRML_EXPORT bool CheckVersion(int version) { return version == zrml::kInterfaceVersion + 1; }
ZRML_EXPORT int GetInterfaceCount() { return 1; }
ZRML_EXPORT bool GetInstance(std::uint64_t, zrml::HostInstance**) { return false; }
