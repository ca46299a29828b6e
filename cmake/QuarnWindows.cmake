# quarn_windows_resource(TARGET DESCRIPTION) gives a Windows program its version, icon and manifest.
function(quarn_windows_resource TARGET DESCRIPTION)
  if(NOT WIN32)
    return()
  endif()
  get_target_property(FILE ${TARGET} OUTPUT_NAME)
  if(NOT FILE)
    set(FILE ${TARGET})
  endif()
  get_target_property(SUFFIX ${TARGET} SUFFIX)
  if(NOT SUFFIX)
    set(SUFFIX .exe)
  endif()
  set(_rc ${CMAKE_BINARY_DIR}/generated/${TARGET}.rc)
  configure_file(${CMAKE_SOURCE_DIR}/res/windows/program.rc.in ${_rc} @ONLY)
  target_sources(${TARGET} PRIVATE ${_rc})
  set_source_files_properties(${_rc} PROPERTIES OBJECT_DEPENDS
    "${CMAKE_SOURCE_DIR}/res/windows/quarn.ico;${CMAKE_SOURCE_DIR}/res/windows/program.manifest")
endfunction()

# quarn_windows_runtime() copies the DLLs beside the programs, and defines the content of a package.
function(quarn_windows_runtime)
  # On every system, so that it can be compared with the rest of the identity.
  configure_file(${CMAKE_SOURCE_DIR}/packaging/windows/identity.nsh.in
    ${CMAKE_BINARY_DIR}/generated/identity.nsh @ONLY)
  if(NOT WIN32)
    return()
  endif()
  set(_beside)
  foreach(_library libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${_library}
      OUTPUT_VARIABLE _file OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    if(NOT IS_ABSOLUTE "${_file}")
      message(FATAL_ERROR "the compiler has no ${_library}")
    endif()
    list(APPEND _beside ${_file})
  endforeach()
  set(_files ${_beside} $<TARGET_FILE:Qt6::Core> $<TARGET_FILE:Qt6::Gui> $<TARGET_FILE:Qt6::Widgets>)
  set(_platforms $<TARGET_FILE:Qt6::QWindowsIntegrationPlugin>)
  set(_styles $<TARGET_FILE:Qt6::QWindowsVistaStylePlugin>)

  install(TARGETS quarn quarn-console quarn-send RUNTIME DESTINATION .)
  install(FILES ${_files} DESTINATION .)
  install(FILES ${_platforms} DESTINATION platforms)
  install(FILES ${_styles} DESTINATION styles)
  install(FILES ${CMAKE_SOURCE_DIR}/packaging/demo/demo.qrn DESTINATION .)
  if(QUARN_GUIDE_FOLDER)
    install(DIRECTORY ${QUARN_GUIDE_FOLDER}/ DESTINATION guide)
  endif()

  set(_tests_too)
  if(QUARN_TESTS)
    set(_tests_too $<TARGET_FILE:Qt6::Test>)
  endif()
  set(_bin ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
  add_custom_target(quarn_runtime ALL
    COMMAND ${CMAKE_COMMAND} -E make_directory ${_bin}/platforms ${_bin}/styles
    COMMAND ${CMAKE_COMMAND} -E copy_if_different ${_files} ${_tests_too} ${_bin}
    COMMAND ${CMAKE_COMMAND} -E copy_if_different ${_platforms} ${_bin}/platforms
    COMMAND ${CMAKE_COMMAND} -E copy_if_different ${_styles} ${_bin}/styles
    COMMENT "Putting the libraries beside the programs"
    VERBATIM)
endfunction()
