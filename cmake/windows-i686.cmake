# MinGW-w64 for 32-bit Windows, with POSIX threads; programs run under Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_COMPILER i686-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER i686-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER i686-w64-mingw32-windres)
set(CMAKE_FIND_ROOT_PATH /usr/i686-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../scripts/under-wine)
# One library of the compiler is shared by every module of a process, so that exceptions pass from one
# to the other; all others are linked in.
set(CMAKE_EXE_LINKER_FLAGS_INIT -shared-libgcc)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -shared-libgcc)
set(CMAKE_MODULE_LINKER_FLAGS_INIT -shared-libgcc)
set(CMAKE_CXX_STANDARD_LIBRARIES
    "-Wl,-Bstatic -lstdc++ -lwinpthread -lssp -Wl,-Bdynamic -lkernel32 -luser32 -ladvapi32")
set(CMAKE_C_STANDARD_LIBRARIES "-Wl,-Bstatic -lssp -Wl,-Bdynamic -lkernel32 -luser32 -ladvapi32")
