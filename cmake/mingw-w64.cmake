# Builds the Windows program on Linux: Debian's MinGW-w64 with the C++ library's own threads.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(_triple x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${_triple}-gcc-posix)
set(CMAKE_CXX_COMPILER ${_triple}-g++-posix)
set(CMAKE_RC_COMPILER ${_triple}-windres)

# Libraries are found in the compiler's folder and in those set by the caller, programs on this system.
set(CMAKE_FIND_ROOT_PATH /usr/${_triple} ${CMAKE_PREFIX_PATH})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Qt's own tools (moc, rcc) run on this system; which folder describes them depends on its processor.
set(QT_HOST_PATH /usr CACHE PATH "Where this system's Qt is")
file(GLOB _host_info /usr/lib/*/cmake/Qt6HostInfo)
if(_host_info)
  list(GET _host_info 0 _host_info)
  get_filename_component(_host_cmake ${_host_info} DIRECTORY)
  set(QT_HOST_PATH_CMAKE_DIR ${_host_cmake} CACHE PATH "Where this system's Qt describes its tools")
endif()
