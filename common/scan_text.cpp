#include "common/scan_text.h"

#include "common/number.h"
#include "common/text.h"

namespace zrml {

bool ScanText::Literal(std::string_view format) {
  for (const char c : format) {
    if (IsSpace(c)) {
      while (!rest_.empty() && IsSpace(rest_.front())) rest_.remove_prefix(1);
    } else if (!rest_.empty() && rest_.front() == c) {
      rest_.remove_prefix(1);
    } else {
      return false;
    }
  }
  return true;
}

std::optional<int> ScanText::Int() { return TakeInt(rest_); }
std::optional<double> ScanText::Double() { return TakeDouble(rest_); }
std::optional<float> ScanText::Float() { return TakeFloat(rest_); }

}  // namespace zrml
