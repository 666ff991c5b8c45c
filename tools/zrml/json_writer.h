// Writes JSON as it goes, so that a long spectrum needs no tree: objects and lists over lines, number arrays
// on one line.
#pragma once

#include <concepts>
#include <span>
#include <string_view>
#include <vector>

#include "tools/zrml/output.h"
#include "tools/zrml/value.h"

namespace zrml::tool {

class JsonWriter {
 public:
  explicit JsonWriter(Output& out) : out_(out) {}

  /// Names the value that is written next, in an object.
  JsonWriter& Key(std::string_view key);

  void Put(const Value& value);
  /// `json` is a value that is written unchanged.
  void Raw(std::string_view json);
  void Numbers(std::span<const double> values);
  void Members(const std::vector<Attribute>& attributes);

  /// `body` writes the members. What a failure leaves open is closed, so that what stands before it is valid.
  template <std::invocable Body>
  void Object(Body body) {
    Begin('{');
    Fill('}', body);
  }
  template <std::invocable Body>
  void Array(Body body) {
    Begin('[');
    Fill(']', body);
  }

  /// Whether nothing is written yet.
  bool IsEmpty() const { return depth_ == 0 && isFirst_; }
  /// Ends the document's last line.
  void Finish() { out_.Text("\n"); }

 private:
  template <class Body>
  void Fill(char bracket, Body body) {
    try {
      body();
    } catch (...) {
      End(bracket);
      throw;
    }
    End(bracket);
  }

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
