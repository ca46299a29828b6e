# A program that is one file: Qt and the compiler's libraries are inside, and only libraries of the system are outside.
# Always so on Windows; on Linux scripts/portable makes such programs. What no program calls is left out by the linker;
# Qt brings the flags for that.
include(CMakeDependentOption)
cmake_dependent_option(QUARN_ONE_FILE "Build programs with Qt inside (needs Qt without shared libraries)" OFF
  "NOT WIN32" ON)

if(QUARN_ONE_FILE AND WIN32)
  # The same program at any time.
  target_link_options(quarn_compiler INTERFACE -static LINKER:--no-insert-timestamp)
elseif(QUARN_ONE_FILE)
  # Libraries of the system must not find what is inside: they use other versions of the same libraries. Packed
  # relocations (glibc 2.36) take a thirtieth of the place in memory, where Qt has tens of thousands of them.
  target_link_options(quarn_compiler INTERFACE -static-libstdc++ -static-libgcc LINKER:--exclude-libs,ALL
    LINKER:-z,pack-relative-relocs)
endif()

# Call it where Qt has been found.
function(quarn_require_static_qt)
  if(TARGET XCB::IMAGE AND XCB_UTIL_LIBRARY)
    # An archive does not say what it needs.
    set_property(TARGET XCB::IMAGE APPEND PROPERTY INTERFACE_LINK_LIBRARIES ${XCB_UTIL_LIBRARY})
  endif()
  get_target_property(_type Qt6::Core TYPE)
  if(QUARN_ONE_FILE AND NOT _type STREQUAL "STATIC_LIBRARY")
    message(FATAL_ERROR "Qt in ${Qt6_DIR} has shared libraries; scripts/windows qt and scripts/portable qt build "
      "one without")
  endif()
endfunction()
