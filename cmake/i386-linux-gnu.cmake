# Builds everything of this project as 32-bit x86 (i686 baseline: no SSE code generation
# unless a target asks for it) on an x86-64 Debian host with g++-multilib.
set(CMAKE_C_FLAGS_INIT "-m32 -march=i686 -mtune=generic")
set(CMAKE_CXX_FLAGS_INIT "-m32 -march=i686 -mtune=generic")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-m32")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-m32")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-m32")
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
set(CMAKE_SYSTEM_LIBRARY_PATH /usr/lib/i386-linux-gnu /lib/i386-linux-gnu /usr/lib32)
set(FIND_LIBRARY_USE_LIB32_PATHS TRUE)
