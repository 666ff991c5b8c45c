// Exponential and logarithm with the same bits on every platform: C libraries differ in the last bit, and
// some depend on the precision that a host has set in the floating-point control word.
#pragma once

namespace zrml {

/// Natural logarithm, within 1.5 units in the last place. Minus infinity at 0, NaN below.
double PortableLog(double x);

/// e to the power x, within 2 units in the last place. Results below the smallest normal number are 0.
double PortableExp(double x);

}  // namespace zrml
