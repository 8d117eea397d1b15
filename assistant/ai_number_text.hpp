#pragma once
// Numbers as the model reads them, in the context text and in tool results
// alike: decimals in their shortest round-trip form with ".0" on whole
// values ("10.0", "2.5", "1e-05"), sizes as whole numbers with the fraction
// cut off. Never fails, whatever the value. Any thread.

#include <string>

namespace orvane::assistant {

std::string decimalText(double v);
// NaN prints 0; values beyond 64 bits print the nearest limit.
std::string integerText(double v);

}  // namespace orvane::assistant
