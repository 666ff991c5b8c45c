// Writes JSON as it goes, so that a long spectrum needs no tree: objects and lists over lines, number arrays
// on one line. Numbers are the shortest that read back the same; those that JSON has no form for are null.
#pragma once

#include <concepts>
#include <span>
#include <string_view>

#include "tools/zrml/output.h"

namespace zrml::tool {

class JsonWriter {
 public:
  explicit JsonWriter(Output& out) : out_(out) {}

  /// Names the value that is written next, in an object.
  JsonWriter& Key(std::string_view key);

  void Null();
  void Bool(bool value);
  void Integer(long long value);
  void Number(double value);
  void String(std::string_view value);
  void Numbers(std::span<const double> values);

  /// `body` writes the members.
  template <std::invocable Body>
  void Object(Body body) {
    Begin('{');
    body();
    End('}');
  }
  template <std::invocable Body>
  void Array(Body body) {
    Begin('[');
    body();
    End(']');
  }

  /// Ends the document's last line.
  void Finish() { out_.Text("\n"); }

 private:
  void Begin(char bracket);
  void End(char bracket);
  void Separate();
  void Indent();

  Output& out_;
  int depth_ = 0;
  bool isFirst_ = true;
  bool isKeyed_ = false;
};

}  // namespace zrml::tool
