# What ships but for the platform layer, for each build of the library.
set(VEXO_LIBRARY_SOURCES)
foreach(room report chip display motion setup text api)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/${room}/*.cpp)
  list(APPEND VEXO_LIBRARY_SOURCES ${sources})
endforeach()
# The platform layer of the device and of desktop Windows.
file(GLOB VEXO_CE_SOURCES CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/platform/ce/*.cpp)
