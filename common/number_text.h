// Numbers as text for programs to read back, whatever the locale.
#pragma once

#include <string>

namespace zrml {

/// The shortest decimal that reads back as the same double; positional from 1e-5 up to 1e15, with an exponent
/// beyond. "nan", "inf", "-inf".
void AppendNumber(double value, std::string& out);
std::string Number(double value);

}  // namespace zrml
