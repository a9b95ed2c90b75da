// The library is compiled with hidden visibility; the few names that hosts and companion
// libraries reach at run time are marked with this, and the linker version script decides what
// finally appears in the dynamic symbol table.
#pragma once

#define NQ_EXPORTED __attribute__((visibility("default")))
