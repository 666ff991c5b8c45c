// A file that appears under its name whole or not at all: written without a name, or under a temporary one in
// the same folder where unnamed files are not possible, flushed to the disk, then named. Windows removes the
// temporary one when the program is killed.
#pragma once

#include <cstdint>
#include <string>

#include "common/platform/platform.h"
#include "convert/byte_sink.h"
#include "convert/hooks.h"

namespace zrml::convert {

enum class Existing { kKeep, kReplace };

class TargetFile : public ByteSink {
 public:
  /// Makes the file without its name. Throws an Error when that is impossible, or when `path` exists and is
  /// to be kept. Except on Windows, a link at `path` is followed and the replaced file keeps its mode.
  /// `cancel` is checked when the disk is interrupted.
  TargetFile(std::string path, Existing existing, Cancel cancel = {});
  /// Removes the file unless Finish has named it.
  ~TargetFile() override;

  void Write(std::string_view bytes) override;
  /// Flushes and names. Throws an Error also when another program has made `path` in the meantime and it is
  /// to be kept.
  void Finish() override;

 private:
  static constexpr std::intptr_t kClosed = -1;

  void Flush();
  int Name();
  void Close();
  [[noreturn]] void Fail(int error) const;
  [[noreturn]] void FailAsExisting() const;

  std::string path_;
  platform::SystemPath target_;
  Existing existing_;
  Cancel cancel_;
  platform::SystemPath temporary_;  // empty while there is none
  std::intptr_t handle_ = kClosed;
};

}  // namespace zrml::convert
