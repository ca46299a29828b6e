# The guide as a page for a browser, with its pictures, in QUARN_GUIDE_FOLDER; empty if this system cannot make it.
find_program(QUARN_LOWDOWN lowdown DOC "Makes the guide's page (optional)")
set(QUARN_GUIDE_FOLDER)
if(QUARN_LOWDOWN)
  set(QUARN_GUIDE_FOLDER ${CMAKE_BINARY_DIR}/generated/guide)
  set(_text ${CMAKE_SOURCE_DIR}/docs/guide.md)
  # Quotation marks stay as they are, because messages are quoted exactly.
  execute_process(COMMAND ${QUARN_LOWDOWN} -Thtml --html-head-ids --out-no-smarty ${_text}
    OUTPUT_VARIABLE QUARN_GUIDE COMMAND_ERROR_IS_FATAL ANY)
  # Pictures that the guide does not show any more go.
  file(REMOVE_RECURSE ${QUARN_GUIDE_FOLDER})
  configure_file(${CMAKE_SOURCE_DIR}/packaging/guide/guide.html.in ${QUARN_GUIDE_FOLDER}/index.html @ONLY)
  string(REGEX MATCHALL "src=\"images/[^\"]+\"" _pictures "${QUARN_GUIDE}")
  list(REMOVE_DUPLICATES _pictures)
  foreach(_picture IN LISTS _pictures)
    string(REGEX REPLACE "^src=\"(.*)\"$" "\\1" _picture ${_picture})
    configure_file(${CMAKE_SOURCE_DIR}/docs/${_picture} ${QUARN_GUIDE_FOLDER}/${_picture} COPYONLY)
  endforeach()
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${_text})
else()
  message(STATUS "lowdown was not found: the guide is installed as plain text only")
endif()
