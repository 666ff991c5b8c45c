#include "library/handle.h"

#include <algorithm>
#include <array>
#include <limits>
#include <stdexcept>

#include "source/position.h"

namespace zrml::library {
namespace {

constexpr const char* kNoMemory = "out of memory";  // short enough for a string without memory of its own

bool IsControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

// Gives `status`; `message` becomes one line, whatever names `text` has in it.
zrml_status WithMessage(zrml_status status, const char* text, std::string& message) noexcept {
  try {
    message = text;
  } catch (...) {
    message = kNoMemory;
    return ZRML_NO_MEMORY;
  }
  std::replace_if(message.begin(), message.end(), IsControl, ' ');
  return status;
}

// Of this thread. Messages need no memory once the thread has opened a source; longer ones are cut.
struct OpenMessage {
  std::array<char, 2048> text = {};

  void Set(const std::string& message) {
    std::size_t size = std::min(message.size(), text.size() - 1);
    // Not in the middle of a character.
    while (size < message.size() && size > 0 && (static_cast<unsigned char>(message[size]) & 0xC0) == 0x80)
      --size;
    std::copy_n(message.begin(), size, text.begin());
    text[size] = '\0';
  }
};
thread_local OpenMessage openMessage;

}  // namespace

zrml_status StatusOfException(std::string& message) noexcept {
  try {
    throw;
  } catch (const source::Error& error) {
    return WithMessage(static_cast<zrml_status>(error.GetStatus()), error.what(), message);
  } catch (const source::Cancelled&) {
    return WithMessage(ZRML_CANCELLED, "cancelled", message);
  } catch (const std::bad_alloc&) {
    return WithMessage(ZRML_NO_MEMORY, kNoMemory, message);
  } catch (const std::length_error&) {  // more than a list can have
    return WithMessage(ZRML_NO_MEMORY, kNoMemory, message);
  } catch (const std::exception& error) {
    return WithMessage(ZRML_UNREADABLE, error.what(), message);
  } catch (...) {
    return WithMessage(ZRML_UNREADABLE, "unknown failure", message);
  }
}

void ThrowWrongArgument(const char* what) { throw source::Error(source::Status::kWrongArgument, what); }

void Require(const void* pointer, const char* name) {
  if (pointer == nullptr)
    throw source::Error(source::Status::kWrongArgument, std::string(name) + " is a null pointer");
}

void RequireSample(source::Source& source, int sample) {
  if (sample < 0 || sample >= source.SampleCount()) source::ThrowNoSuch(sample, "sample");
}

void RequireRoom(std::size_t count, const void* array, std::size_t room) {
  if (room < count) ThrowWrongArgument("there is too little room for the values");
  if (count > 0) Require(array, "an array");
}

int CountOf(std::size_t size) {
  constexpr std::size_t kMost = std::numeric_limits<int>::max();
  return static_cast<int>(std::min(size, kMost));
}

source::Cancel CancelOf(const zrml_source& handle, std::size_t all) {
  constexpr std::size_t kStride = 64;
  if (handle.progress == nullptr) return {};
  return [&handle, all, done = std::size_t{0}]() mutable {
    const std::size_t step = done++;
    return step % kStride == 0 && handle.progress(handle.context, step, all) != 0;
  };
}

}  // namespace zrml::library

using zrml::library::Require;
using zrml::library::Run;

const char* zrml_version(void) { return ZRML_VERSION; }

zrml_status zrml_open(const char* path, zrml_source** source) {
  std::string message;
  zrml_status status = ZRML_OK;
  if (source != nullptr) *source = nullptr;
  try {
    Require(path, "path");
    Require(source, "source");
    auto handle = std::make_unique<zrml_source>();
    handle->source = zrml::source::Source::Open(path);
    *source = handle.release();
  } catch (...) {
    status = zrml::library::StatusOfException(message);
    zrml::library::openMessage.Set(message);
  }
  return status;
}

void zrml_close(zrml_source* source) { delete source; }

const char* zrml_message(const zrml_source* source) {
  return source != nullptr ? source->message.c_str() : "there is no source";
}

const char* zrml_open_message(void) { return zrml::library::openMessage.text.data(); }

const char* zrml_path(const zrml_source* source) {
  return source != nullptr ? source->source->Path().c_str() : "";
}

zrml_format zrml_format_of(const zrml_source* source) {
  if (source == nullptr) return ZRML_NO_FORMAT;
  return source->source->GetFormat() == zrml::source::Format::kReport ? ZRML_REPORT : ZRML_RAW_DIRECTORY;
}

zrml_status zrml_set_progress(zrml_source* source, zrml_progress progress, void* context) {
  return Run(source, [&](auto&) {
    source->progress = progress;
    source->context = context;
  });
}
