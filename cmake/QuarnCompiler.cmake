# Warnings are errors in every configuration; sanitizers apply to all targets.
add_library(quarn_compiler INTERFACE)
target_compile_options(quarn_compiler INTERFACE
  -Wall -Wextra -Wpedantic -Werror -Wshadow -Wconversion -Wsign-conversion
  -Wnon-virtual-dtor -Wold-style-cast -Wcast-align -Wunused -Woverloaded-virtual
  -Wnull-dereference -Wdouble-promotion -Wformat=2)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # With optimisation GCC 12 takes `"c" + std::to_string(n)` for a copy onto itself (its bug 105651).
  target_compile_options(quarn_compiler INTERFACE -Wno-restrict)
endif()
target_compile_definitions(quarn_compiler INTERFACE
  QT_NO_CAST_TO_ASCII QT_NO_FOREACH QT_NO_KEYWORDS QT_DISABLE_DEPRECATED_BEFORE=0x060400)
target_include_directories(quarn_compiler INTERFACE ${CMAKE_SOURCE_DIR}/src ${CMAKE_BINARY_DIR}/generated)
configure_file(${CMAKE_SOURCE_DIR}/cmake/identity.h.in ${CMAKE_BINARY_DIR}/generated/identity.h @ONLY)

# Hardening: an error ends the program instead of being exploitable. The sanitizers and the fuzzer use checks of their
# own.
if(NOT QUARN_SANITIZE AND NOT QUARN_FUZZ AND CMAKE_SYSTEM_NAME STREQUAL "Linux")
  target_compile_definitions(quarn_compiler INTERFACE _GLIBCXX_ASSERTIONS)
  target_compile_options(quarn_compiler INTERFACE -fstack-protector-strong -fstack-clash-protection
    $<$<STREQUAL:${CMAKE_SYSTEM_PROCESSOR},x86_64>:-fcf-protection>
    $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
  target_link_options(quarn_compiler INTERFACE LINKER:-z,relro,-z,now,-z,noexecstack)
endif()

if(QUARN_SANITIZE)
  string(REPLACE "," ";" _sanitizers "${QUARN_SANITIZE}")
  foreach(_s IN LISTS _sanitizers)
    add_compile_options(-fsanitize=${_s})
    add_link_options(-fsanitize=${_s})
  endforeach()
  add_compile_options(-fno-omit-frame-pointer -g1)
  if("address" IN_LIST _sanitizers)
    add_compile_options(-fno-sanitize-recover=all)
  endif()
  # With the sanitizers' instrumentation GCC gives false warnings about null and uninitialised values.
  target_compile_options(quarn_compiler INTERFACE -Wno-null-dereference -Wno-maybe-uninitialized)
endif()
