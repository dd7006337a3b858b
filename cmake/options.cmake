# What every target is compiled with, through an interface target: qrn_options, or qrn_sanitized for what is under test:
# core, virtual printer and tools.
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

# Instrumented code takes twice as long to compile, so the tests themselves are not. But who looks for races must see all
# of the code, or takes the waiting of one thread for another for none.
add_library(qrn_sanitized INTERFACE)
target_link_libraries(qrn_sanitized INTERFACE qrn_options)
if(QRN_SANITIZE)
  if(QRN_SANITIZE MATCHES "thread")
    set(instrumented qrn_options)
  else()
    set(instrumented qrn_sanitized)
  endif()
  # The vptr check needs run-time type information, which the core is built without.
  target_compile_options(${instrumented} INTERFACE -fsanitize=${QRN_SANITIZE} -fno-sanitize=vptr
                                                   -fno-sanitize-recover=all)
  target_compile_options(qrn_options INTERFACE -fno-omit-frame-pointer)
  target_link_options(qrn_options INTERFACE -fsanitize=${QRN_SANITIZE})
endif()
