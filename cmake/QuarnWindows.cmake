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

# quarn_windows_package() defines the content of a package. Each program is one file.
function(quarn_windows_package)
  # On every system, so that it can be compared with the rest of the identity.
  configure_file(${CMAKE_SOURCE_DIR}/packaging/windows/identity.nsh.in
    ${CMAKE_BINARY_DIR}/generated/identity.nsh @ONLY)
  if(NOT WIN32)
    return()
  endif()
  install(TARGETS quarn quarn-console quarn-send RUNTIME DESTINATION .)
  install(FILES ${CMAKE_SOURCE_DIR}/packaging/demo/demo.qrn DESTINATION .)
  if(QUARN_GUIDE_FOLDER)
    install(DIRECTORY ${QUARN_GUIDE_FOLDER}/ DESTINATION guide)
  endif()
endfunction()
