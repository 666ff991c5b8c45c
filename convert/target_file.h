// A file that appears under its name whole or not at all: written under a temporary name in the same folder,
// flushed to the disk, then renamed.
#pragma once

#include <cstdint>
#include <string>

#include "convert/byte_sink.h"
#include "convert/hooks.h"

namespace zrml::convert {

enum class Existing { kKeep, kReplace };

class TargetFile : public ByteSink {
 public:
  /// Makes the temporary file. Throws an Error when that is impossible, or when `path` exists and is to be
  /// kept. `cancel` is asked when the disk is interrupted.
  TargetFile(std::string path, Existing existing, Cancel cancel = {});
  /// Removes the temporary file unless Finish has renamed it.
  ~TargetFile() override;

  void Write(std::string_view bytes) override;
  /// Flushes and renames. Throws an Error also when another program has made `path` in the meantime and it
  /// is to be kept.
  void Finish() override;

 private:
  static constexpr std::intptr_t kClosed = -1;

  void Close();
  [[noreturn]] void Fail(const std::string& reason) const;
  [[noreturn]] void FailAsExisting() const;

  std::string path_;
  Existing existing_;
  Cancel cancel_;
  std::string temporaryPath_;  // empty once there is none
  std::intptr_t handle_ = kClosed;
};

}  // namespace zrml::convert
