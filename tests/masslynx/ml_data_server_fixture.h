// Shared by the provider's tests: small raw directories, and a provider that has one open.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "plugin/raw_server.h"
#include "tests/support/raw_directory_builder.h"

namespace zrml {

inline constexpr unsigned kTofMs = 18;
inline constexpr unsigned kTofMsMs = 16;
inline constexpr unsigned kDau = 6;
inline constexpr unsigned kDad = 12;

using Names = std::vector<std::wstring>;
using Doubles = HostVector<double>;

/// A function of scans at the given times, each with a point of m/z 100 and intensity 1, 2, ...
inline FunctionFiles FunctionOf(unsigned type, const std::vector<float>& times = {0.5F}) {
  FunctionFiles function;
  function.record.type = type;
  function.record.dataFormat = 8;
  for (const float time : times) {
    const auto intensity = static_cast<std::int16_t>(function.scans.size() + 1);
    function.scans.push_back(ScanOf<StoredPoint8>(time, {{100 * 128, intensity}}));
  }
  return function;
}

inline RawDirectoryBuilder DirectoryOf(std::initializer_list<unsigned> types) {
  RawDirectoryBuilder raw;
  for (const unsigned type : types) raw.functions.push_back(FunctionOf(type));
  return raw;
}

inline Names FunctionNames(CDataServerImpl& server) {
  Names names;
  for (int i = 0; i < server.GetFunctionCount(0); ++i) names.push_back(server.GetFunctionName(0, i));
  return names;
}

/// "?" when the key is not recognised.
inline std::wstring Metadata(CDataServerImpl& server, const std::wstring& key, int function = 0) {
  std::wstring value = L"old";
  return server.GetMetadataValue(0, function, key, value) ? value : L"?";
}

inline std::wstring OpenedPath(const TempDirectory& directory) { return directory.WidePath() + L'\\'; }

/// A provider with its own directory.
class MLDataServerTest : public testing::Test {
 protected:
  void Open(const RawDirectoryBuilder& raw) {
    server_.Close();
    directory_.reset();
    directory_.emplace(raw.Build());
    ASSERT_TRUE(server_.Open(directory_->WidePath()));
  }

  std::optional<TempDirectory> directory_;
  plugin::CMLDataServerImpl server_;
};

}  // namespace zrml
