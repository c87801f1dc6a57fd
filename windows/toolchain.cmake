# MinGW-w64 for 64- or 32-bit Windows: VEXO_PROCESSOR is x86_64 or i686. The thread model is in the
# compiler's name: the library needs none, the test host needs the C++ threads of the posix one.
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VEXO_PROCESSOR)
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR ${VEXO_PROCESSOR})
set(CMAKE_C_COMPILER ${VEXO_PROCESSOR}-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER ${VEXO_PROCESSOR}-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER ${VEXO_PROCESSOR}-w64-mingw32-windres)
set(CMAKE_DLLTOOL ${VEXO_PROCESSOR}-w64-mingw32-dlltool)
set(CMAKE_FIND_ROOT_PATH /usr/${VEXO_PROCESSOR}-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
