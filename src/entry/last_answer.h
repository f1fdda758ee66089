#pragma once

namespace ORBO {

// Writes the answer for which no memory is needed, error 117, to descriptor 1.
void WriteLastAnswer();

}  // namespace ORBO
