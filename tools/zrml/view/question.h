// What the page asks: a name and numbers, as in "chromatogram?function=0&kind=bpc&run=0&sample=0". No text of
// it is ever a path.
#pragma once

#include <limits>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace zrml::view {

/// A question that has no answer, such as one about a function that is not there.
struct WrongQuestion {};

class Question {
 public:
  Question() = default;
  Question(std::string name, std::map<std::string, std::string> values)
      : name_(std::move(name)), values_(std::move(values)) {}

  /// No value when `text` is not a question.
  static std::optional<Question> Parse(std::string_view text);

  const std::string& Name() const { return name_; }
  /// As it is asked for, its values in the order of their keys.
  std::string Text() const;

  bool Has(const std::string& key) const { return values_.contains(key); }
  /// Empty when there is no such value.
  std::string Word(const std::string& key) const;
  /// A finite number. These throw WrongQuestion when it is missing or not valid.
  double Number(const std::string& key) const;
  /// Not below 0 and below `count`.
  int Position(const std::string& key, int count = std::numeric_limits<int>::max()) const;

 private:
  std::string name_;
  std::map<std::string, std::string> values_;
};

}  // namespace zrml::view
