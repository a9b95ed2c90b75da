// The library is compiled with hidden visibility; the few names that hosts and companion
// libraries reach at run time are marked with this, and the linker version script decides what
// finally appears in the dynamic symbol table.
//
// Inside the library these names are protected rather than merely visible: hosts and companions
// still find them, but every reference from the library's own code is bound to the library's own
// definition when it is linked. A host that happens to define a global `logger` or a function
// `load_shared_library` of its own therefore keeps it to itself, instead of receiving the
// library's state or its calls. Protected objects cannot be copied into an executable either: a
// host built without position-independent code that reads them directly fails to link ("copy
// relocation against non-copyable protected symbol") rather than running with a stale copy that
// the library never updates. Code outside the library, tests among it, sees plain visible names.
#pragma once

#if defined(NQ_CORE_LIBRARY)
#define NQ_EXPORTED __attribute__((visibility("protected")))
#else
#define NQ_EXPORTED __attribute__((visibility("default")))
#endif
