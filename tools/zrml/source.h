// An open data source and the provider that reads it.
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "plugin/data_server.h"
#include "tools/zrml/plugin_library.h"

namespace zrml {

class Source {
 public:
  /// Opens `path` with the first provider of the plug-in that takes it. A file that no provider takes stands
  /// for its folder when one takes that: people choose a data file of a raw directory. Throws a Failure.
  static Source Open(const std::wstring& path, const std::wstring& pluginPath);

  /// As the user wrote it.
  const std::wstring& Path() const { return path_; }
  CDataServerImpl& Server() const { return *server_; }

 private:
  Source(std::wstring path, PluginLibrary plugin) : path_(std::move(path)), plugin_(std::move(plugin)) {}
  bool FindProvider(const std::wstring& path);

  std::wstring path_;
  PluginLibrary plugin_;
  std::unique_ptr<CDataServerImpl> server_;
};

/// Throws a Failure when the system would not let `count` more files be open at once: providers take a file
/// that they cannot open for one that is not there.
void RequireFiles(int count);

/// The position of the thing that the user called `number`. Throws a Failure, wrong usage, unless it is one
/// of 1 to `count`; `noun` and `owner` ("scan", "function 2") name it and what holds it.
int PositionOf(int number, int count, const std::wstring& noun, const std::wstring& owner);

/// The positions of a sample and a function of it, both counted from 1 by the user.
struct FunctionPosition {
  int sample = 0;
  int function = 0;
};
int FindSample(CDataServerImpl& server, int sampleNumber);
FunctionPosition FindFunction(CDataServerImpl& server, int sampleNumber, int functionNumber);

}  // namespace zrml
