// messages.h - internal access to the diagnostic text expander.
#pragma once

namespace intrins {

// Prints a message template to the standard error stream, expanding "@I",
// "@B", "@G" and "@V" from the values that follow, as f90_ArrLibError does.
void print_message_text(const char* text, ...);

}  // namespace intrins
