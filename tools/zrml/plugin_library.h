// The plug-in as a host sees it: a shared library that makes providers. Loaded through its three exports and
// nothing else.
#pragma once

#include <memory>
#include <string>

#include "plugin/data_server.h"
#include "plugin/provider_table.h"
#include "tools/zrml/host_system.h"

namespace zrml::tool {

class PluginLibrary {
 public:
  /// Throws a Failure when `path` is no plug-in of this interface version.
  static PluginLibrary Load(const std::string& path);

  int ProviderCount() const { return providerCount_; }

  /// A closed server of provider `index`. Throws a Failure when there is none.
  std::unique_ptr<CDataServerImpl> CreateServer(int index) const;

 private:
  PluginLibrary(std::string path, SharedLibrary library);

  std::string path_;
  SharedLibrary library_;
  GetInstanceFunction getInstance_ = nullptr;
  int providerCount_ = 0;
};

}  // namespace zrml::tool
