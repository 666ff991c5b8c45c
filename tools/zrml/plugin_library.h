// The plug-in as a host sees it: a shared library that makes providers. Loaded through its three exports and
// nothing else.
#pragma once

#include <memory>
#include <string>

#include "plugin/data_server.h"
#include "plugin/provider_table.h"

namespace zrml::tool {

class PluginLibrary {
 public:
  /// Throws a Failure when `path` is not a plug-in of this interface version.
  explicit PluginLibrary(const std::string& path);

  int ProviderCount() const { return providerCount_; }

  /// A closed server of provider `index`. Throws a Failure when there is none.
  std::unique_ptr<CDataServerImpl> CreateServer(int index) const;

 private:
  std::string path_;
  GetInstanceFunction getInstance_ = nullptr;
  int providerCount_ = 0;
};

}  // namespace zrml::tool
