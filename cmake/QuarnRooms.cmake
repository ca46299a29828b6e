# quarn_room(NAME SOURCES... [LINK targets...]) makes one layer of the program: a static library that
# sees only the layers it names, so that a forbidden include does not link.
function(quarn_room NAME)
  cmake_parse_arguments(ROOM "" "" "SOURCES;LINK" ${ARGN})
  add_library(${NAME} STATIC ${ROOM_SOURCES})
  target_link_libraries(${NAME} PUBLIC quarn_compiler ${ROOM_LINK})
endfunction()

# quarn_test(NAME SOURCES... [LINK targets...] [LABELS ...] [WIDGETS]) makes one GoogleTest program and
# registers each of its cases with CTest. WIDGETS runs it on the offscreen platform; on Windows, where that
# is what the program is made for, on the real one.
function(quarn_test NAME)
  cmake_parse_arguments(T "WIDGETS;SERIAL" "TIMEOUT" "SOURCES;LINK;LABELS" ${ARGN})
  add_executable(${NAME} ${T_SOURCES})
  target_link_libraries(${NAME} PRIVATE quarn_compiler ${T_LINK} GTest::gtest quarn_test_compiler)
  target_include_directories(${NAME} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
  target_compile_definitions(${NAME} PRIVATE QUARN_TEST_DATA="${CMAKE_SOURCE_DIR}/tests/data")
  if(NOT T_TIMEOUT)
    set(T_TIMEOUT 120)
  endif()
  # One variable, no more: gtest_discover_tests takes the rest of a list for further properties. What the
  # sanitizers want to be told is in the test presets.
  set(_props TIMEOUT ${T_TIMEOUT})
  if(T_WIDGETS)
    set(_platform offscreen)
    if(WIN32)
      set(_platform windows)
    endif()
    target_compile_definitions(${NAME} PRIVATE QUARN_TEST_PLATFORM="${_platform}")
    if(NOT WIN32)
      list(APPEND _props ENVIRONMENT QT_QPA_PLATFORM=offscreen)
    endif()
  endif()
  if(T_LABELS)
    list(APPEND _props LABELS ${T_LABELS})
  endif()
  if(T_SERIAL)
    list(APPEND _props RUN_SERIAL TRUE)
  endif()
  if(CMAKE_CROSSCOMPILING)
    quarn_test_as_one(${NAME} ${_props})
    return()
  endif()
  gtest_discover_tests(${NAME} DISCOVERY_TIMEOUT 60 DISCOVERY_MODE PRE_TEST PROPERTIES ${_props})
endfunction()

# A program for another system takes its time to start: its cases run in one go. The run has failed too when
# one of them was skipped or is disabled.
function(quarn_test_as_one NAME)
  add_test(NAME ${NAME} COMMAND ${NAME} --gtest_brief=0)
  set_tests_properties(${NAME} PROPERTIES ${ARGN} TIMEOUT 600
    FAIL_REGULAR_EXPRESSION "\\[  SKIPPED \\];DISABLED TEST;Running 0 tests"
    RESOURCE_LOCK "com ports")
endfunction()

if(QUARN_TESTS)
  include(GoogleTest)
  # Linked last, so that it has the last word (an option of the test's own would come first, and lose).
  # Tests reach for what must be there and crash where it is not; that is a failure, not a hazard.
  add_library(quarn_test_compiler INTERFACE)
  target_compile_options(quarn_test_compiler INTERFACE -Wno-null-dereference)
endif()
