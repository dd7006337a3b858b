# Cross-builds for 32-bit Windows with Debian's MinGW-w64. QRN_MINGW_THREADS: "win32" for the library, which starts its
# threads through the platform layer; "posix" for the tests, whose virtual printer uses std::thread.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(QRN_MINGW_THREADS win32 CACHE STRING "Thread flavour of the cross compiler: win32 or posix")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QRN_MINGW_THREADS)

set(prefix i686-w64-mingw32)
set(CMAKE_C_COMPILER ${prefix}-gcc-${QRN_MINGW_THREADS})
set(CMAKE_CXX_COMPILER ${prefix}-g++-${QRN_MINGW_THREADS})
set(CMAKE_RC_COMPILER ${prefix}-windres)
set(CMAKE_DLLTOOL ${prefix}-dlltool)
set(CMAKE_OBJCOPY ${prefix}-objcopy)

set(CMAKE_FIND_ROOT_PATH /usr/${prefix})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# SSE2 is the baseline, for arithmetic too, so that every build rounds alike.
add_compile_options(-msse2 -mfpmath=sse)
# Nothing but the system's own libraries is needed where the files are used.
add_link_options(-static)
