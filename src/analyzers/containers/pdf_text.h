// Text out of inflated PDF page descriptions: strings inside BT ... ET, spaced by the positioning operators.
#pragma once

#include <cstdint>

// Bytes of history kept while reading operators; the newest is at the end.
constexpr int kPdfHistorySize = 15;

// The decimal number that ends at or before history[index], spaces after it
// skipped; its magnitude (a minus sign ends it), or -1.0 when there is none.
float extractNumber(const char *history, int index);

// Writes the text of inputLength page-description bytes to output and
// returns the bytes written. input[inputLength] is examined too (an operator
// at the very end is seen through it), so it must exist; a NUL is neutral.
// output holds outputSize bytes; inputLength + 1 are always enough. Lines
// longer than lineWidth break at their last blank; 0 does not wrap.
uint32_t clearText(const char *input, uint32_t inputLength, char *output, uint32_t outputSize, int lineWidth);
