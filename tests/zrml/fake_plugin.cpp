// A plug-in with two providers of made-up data.
#include <cstdint>

#include "plugin/provider_table.h"
#include "tests/zrml/fake_servers.h"
#include "tests/zrml/plugin_exports.h"

ZRML_EXPORT bool CheckVersion(int version) { return version == zrml::kInterfaceVersion; }
ZRML_EXPORT int GetInterfaceCount() { return 2; }

ZRML_EXPORT bool GetInstance(std::uint64_t index, zrml::HostInstance** instance) {
  if (index == 0) *instance = zrml::MakeInstance(std::make_unique<zrml::FakeFolderServer>());
  if (index == 1) *instance = zrml::MakeInstance(std::make_unique<zrml::FakeReportServer>());
  return index < 2;
}
