# The guide as a page for a browser, with its pictures, in QUARN_GUIDE_FOLDER; empty if it cannot be made here. lowdown
# makes it. The source of a release has what lowdown made (packaging/guide/guide.body.html), for systems without it.
#
# cmake -DTEXT=guide.md -DBODY=FILE -P QuarnGuide.cmake only makes the page's body.

# quarn_guide_body(TEXT VARIABLE): quotation marks stay as they are, because messages are quoted exactly.
function(quarn_guide_body TEXT VARIABLE)
  execute_process(COMMAND ${QUARN_LOWDOWN} -Thtml --html-head-ids --out-no-smarty ${TEXT}
    OUTPUT_VARIABLE _body COMMAND_ERROR_IS_FATAL ANY)
  set(${VARIABLE} "${_body}" PARENT_SCOPE)
endfunction()

find_program(QUARN_LOWDOWN lowdown DOC "Makes the guide's page (optional)")
if(CMAKE_SCRIPT_MODE_FILE)
  quarn_guide_body(${TEXT} _body)
  file(WRITE ${BODY} "${_body}")
  return()
endif()

set(QUARN_GUIDE_FOLDER)
set(_text ${CMAKE_SOURCE_DIR}/docs/guide.md)
set(_made ${CMAKE_SOURCE_DIR}/packaging/guide/guide.body.html)
if(QUARN_LOWDOWN)
  quarn_guide_body(${_text} QUARN_GUIDE)
elseif(EXISTS ${_made})
  file(READ ${_made} QUARN_GUIDE)
endif()
if(QUARN_GUIDE)
  set(QUARN_GUIDE_FOLDER ${CMAKE_BINARY_DIR}/generated/guide)
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
