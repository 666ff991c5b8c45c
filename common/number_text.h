// Numbers as text for programs to read back, whatever the locale.
#pragma once

#include <string>

namespace zrml {

/// The shortest decimal that reads back as the same double; positional from 1e-5 up to 1e15, with an exponent
/// beyond. "nan", "inf", "-inf".
void AppendNumber(double value, std::string& out);
std::string Number(double value);

/// For text that people read: a number of single precision that is not whole has the shortest decimal that
/// reads back as the same number of single precision ("0.1", where Number has "0.10000000149011612"). Others
/// as Number has them.
void AppendShortNumber(double value, std::string& out);
std::string ShortNumber(double value);

}  // namespace zrml
