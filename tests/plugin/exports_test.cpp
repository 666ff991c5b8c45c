// Loads the real library and calls the providers as a host does.
#include <limits>
#include <memory>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "plugin/provider_table.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

#include "plugin/data_server.h"
#include "tests/support/built_file.h"
#include "tests/support/raw_directory_builder.h"

namespace zrml {
namespace {

#ifdef _WIN32
void* LoadPlugin() { return LoadLibraryW(BuiltFile(ZRML_PLUGIN_PATH).c_str()); }
void* FindExport(void* library, const char* name) {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}
void UnloadPlugin(void* library) { FreeLibrary(static_cast<HMODULE>(library)); }
#else
void* LoadPlugin() { return dlopen(BuiltFile(ZRML_PLUGIN_PATH).c_str(), RTLD_NOW | RTLD_LOCAL); }
void* FindExport(void* library, const char* name) { return dlsym(library, name); }
void UnloadPlugin(void* library) { dlclose(library); }
#endif

class Exports : public testing::Test {
 protected:
  void SetUp() override {
    library_ = LoadPlugin();
    ASSERT_NE(library_, nullptr) << ZRML_PLUGIN_PATH;
    checkVersion_ = Find<CheckVersionFunction>("CheckVersion");
    getInterfaceCount_ = Find<GetInterfaceCountFunction>("GetInterfaceCount");
    getInstance_ = Find<GetInstanceFunction>("GetInstance");
    ASSERT_TRUE(checkVersion_ && getInterfaceCount_ && getInstance_);
  }

  void TearDown() override {
    if (library_) UnloadPlugin(library_);
  }

  /// A new object, destroyed through its virtual destructor.
  std::unique_ptr<CDataServerImpl> Create(std::uint64_t index) {
    auto server = CreateServer(getInstance_, index);
    EXPECT_NE(server, nullptr);
    return server;
  }

  template <class Function>
  Function Find(const char* name) {
    return reinterpret_cast<Function>(FindExport(library_, name));
  }

  void* library_ = nullptr;
  CheckVersionFunction checkVersion_ = nullptr;
  GetInterfaceCountFunction getInterfaceCount_ = nullptr;
  GetInstanceFunction getInstance_ = nullptr;
};

TEST_F(Exports, OnlyInterfaceVersion10IsAccepted) {
  for (const int version : {9, 11, 0, 1, -10, 10 + 256, 10 + 65536, std::numeric_limits<int>::min(),
                            std::numeric_limits<int>::max()}) {
    EXPECT_FALSE(checkVersion_(version)) << version;
  }
  EXPECT_TRUE(checkVersion_(10));
}

TEST_F(Exports, TwoProvidersAreOffered) { EXPECT_EQ(getInterfaceCount_(), 2); }

TEST_F(Exports, AnUnknownIndexGivesFalseAndLeavesThePointer) {
  constexpr std::uint64_t kLargest = std::numeric_limits<std::uint64_t>::max();
  for (const std::uint64_t index :
       {std::uint64_t{2}, std::uint64_t{1} << 32, (std::uint64_t{1} << 32) + 1, kLargest}) {
    auto* const before = reinterpret_cast<HostInstance*>(this);  // never used, only compared
    HostInstance* instance = before;
    EXPECT_FALSE(getInstance_(index, &instance)) << index;
    EXPECT_EQ(instance, before) << index;
  }
}

TEST_F(Exports, ProvidersGiveTheirNameGuidAndFilter) {
  const struct {
    std::wstring name;
    std::wstring guid;
    std::wstring filter;
  } providers[] = {
      {L"ZRMLProvider", L"{9e2ea952-4c83-489b-8e0b-a0ffedd70ca2}", L"Waters MassLynx (*.dat *.idx *.inf)"},
      {L"ZROpenLynxRptProvider", L"{c1972a1b-f675-4d08-921a-3e6f8d107c76}",
       L"Waters OpenLynx Report (*.rpt)"},
  };
  for (std::uint64_t index = 0; index < 2; ++index) {
    const auto server = Create(index);
    ASSERT_NE(server, nullptr);
    EXPECT_EQ(server->GetProviderName(), providers[index].name);
    EXPECT_EQ(server->GetProviderGuid(), providers[index].guid);
    EXPECT_EQ(server->GetFileFilter(), providers[index].filter);
  }
}

TEST_F(Exports, EveryCallCreatesAnObjectOfItsOwn) {
  for (std::uint64_t index = 0; index < 2; ++index) {
    const auto first = Create(index);
    auto second = Create(index);
    EXPECT_NE(first.get(), second.get());
    second.reset();
    EXPECT_NE(first->GetProviderName(), L"");  // its twin's end does not touch it
    EXPECT_TRUE(first->Close());
  }
}

TEST_F(Exports, NewObjectsAreClosed) {
  const auto server = Create(0);
  ASSERT_NE(server, nullptr);
  EXPECT_EQ(server->GetFunctionCount(0), 0);
  EXPECT_EQ(server->GetScanCount(0, 0), 0);
  CZRMassSpectrum spectrum;
  EXPECT_FALSE(server->GetSpectrum(0, 0, 0, spectrum));
  EXPECT_TRUE(server->Close());
  EXPECT_TRUE(server->Close());
}

TEST_F(Exports, OpeningDataInOneObjectLeavesTheOtherClosed) {
  RawDirectoryBuilder raw;
  raw.functions = {{.record = {.dataFormat = 9}, .scans = {ScanFrom<StoredPoint9>(0.5F, {{100, 7}})}}};
  const TempDirectory directory = raw.Build();
  const auto opened = Create(0);
  const auto closed = Create(0);
  ASSERT_TRUE(opened && closed);
  EXPECT_TRUE(opened->Open(directory.WidePath()));
  EXPECT_EQ(opened->GetScanCount(0, 0), 1);
  EXPECT_EQ(closed->GetFunctionCount(0), 0);
  EXPECT_EQ(closed->GetScanCount(0, 0), 0);
}

TEST_F(Exports, TheVirtualDestructorIsTheProvidersOwn) {
  // A wrong destructor would free the wrong size or leak members, which sanitizers report.
  for (int round = 0; round < 100; ++round) {
    for (std::uint64_t index = 0; index < 2; ++index) Create(index);
  }
  static_assert(std::has_virtual_destructor_v<CDataServerImpl>);
}

}  // namespace
}  // namespace zrml
