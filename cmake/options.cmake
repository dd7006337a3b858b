# Warnings, sanitizers and numerics that every target takes through one interface target.
option(QRN_BUILD_TOOLS "Build the virtual printer, the tools and the tests" ON)
option(QRN_BENCH_ONLY "Build what measures speeds and nothing else, for word sizes that other libraries lack" OFF)
set(QRN_SANITIZE "" CACHE STRING "Sanitizers, as -fsanitize= takes them")

add_library(qrn_options INTERFACE)
# Every build must round alike, so that the bytes on the wire are the same everywhere: no fused multiply-add.
target_compile_options(qrn_options INTERFACE -Wall -Wextra -Wshadow -Wconversion -Werror -ffp-contract=off)
# GCC 12 warns of overlaps within std::string's own operator+ (its bug 105651).
target_compile_options(qrn_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
# Clang counts changes of sign among conversions, which GCC keeps apart, and suspects texts in a table that span lines.
target_compile_options(qrn_options INTERFACE
  $<$<CXX_COMPILER_ID:Clang>:-Wno-sign-conversion> $<$<CXX_COMPILER_ID:Clang>:-Wno-string-concatenation>)
if(QRN_SANITIZE)
  # The vptr check needs run-time type information, which the core is built without.
  target_compile_options(qrn_options INTERFACE -fsanitize=${QRN_SANITIZE} -fno-sanitize=vptr
                                               -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(qrn_options INTERFACE -fsanitize=${QRN_SANITIZE})
endif()
