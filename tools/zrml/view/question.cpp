#include "tools/zrml/view/question.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace zrml::view {
namespace {

// Letters, digits and what numbers have: nothing is escaped.
bool IsPlain(std::string_view text) {
  constexpr std::string_view kPlain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789.-";
  return !text.empty() && text.find_first_not_of(kPlain) == text.npos;
}

// Takes what is before `end`, or all, off the front of `text`.
std::string_view Take(std::string_view& text, char end) {
  const std::size_t length = std::min(text.find(end), text.size());
  const std::string_view taken = text.substr(0, length);
  text.remove_prefix(std::min(length + 1, text.size()));
  return taken;
}

}  // namespace

std::optional<Question> Question::Parse(std::string_view text) {
  Question question;
  question.name_ = Take(text, '?');
  if (!IsPlain(question.name_) || text.ends_with('&')) return std::nullopt;
  while (!text.empty()) {
    std::string_view value = Take(text, '&');
    const std::string_view key = Take(value, '=');
    if (!IsPlain(key) || !IsPlain(value)) return std::nullopt;
    if (!question.values_.emplace(key, value).second) return std::nullopt;
  }
  return question;
}

std::string Question::Text() const {
  std::string text = name_;
  char separator = '?';
  for (const auto& [key, value] : values_) {
    text.append(1, separator).append(key).append(1, '=').append(value);
    separator = '&';
  }
  return text;
}

std::string Question::Word(const std::string& key) const {
  const auto found = values_.find(key);
  return found == values_.end() ? std::string() : found->second;
}

double Question::Number(const std::string& key) const {
  const std::string text = Word(key);
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(number))
    throw WrongQuestion();
  return number;
}

int Question::Position(const std::string& key, int count) const {
  const double number = Number(key);
  if (!(number >= 0 && number < count) || number != std::floor(number)) throw WrongQuestion();
  return static_cast<int>(number);
}

}  // namespace zrml::view
