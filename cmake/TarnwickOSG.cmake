# The backend. Each subsystem is a folder of class header/source pairs; all
# of them compile once, into the object library TarnwickOSGInternal, which
# two things link:
# - the module TarnwickOSG (libTarnwickOSG.so) that hosts load and unload at
#   run time; it exports only its entry points (cmake/TarnwickOSG.map);
# - the tests and programs that reach the backend's classes, which take the
#   objects into themselves.
set(TARNWICK_BACKEND_FOLDERS binding viewer scene programs environment effects picking models fbx)

set(_backend_sources "")
foreach(folder ${TARNWICK_BACKEND_FOLDERS})
  file(GLOB _s CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/${folder}/*.cpp)
  list(APPEND _backend_sources ${_s})
endforeach()

# FBX files are read through assimp (Debian's reports version 5.2.4).
find_package(assimp REQUIRED)

if(_backend_sources)
  add_library(TarnwickOSGInternal OBJECT ${_backend_sources})
  target_include_directories(TarnwickOSGInternal PUBLIC ${CMAKE_SOURCE_DIR} ${OPENSCENEGRAPH_INCLUDE_DIRS})
  target_link_libraries(TarnwickOSGInternal PUBLIC
    TarnwickStream TarnwickRender TarnwickGeometry TarnwickCommon
    ${OPENSCENEGRAPH_LIBRARIES} OpenGL::GL OpenGL::EGL ${X11_LIBRARIES} Threads::Threads ${CMAKE_DL_LIBS}
    assimp::assimp)
  # The host unloads the backend. Hidden by default, so that no other
  # library binds to the module's copies of inline code; no GNU unique
  # symbols, which would mark the module as never to be unloaded.
  set_target_properties(TarnwickOSGInternal PROPERTIES CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  target_compile_options(TarnwickOSGInternal PRIVATE -fno-gnu-unique)

  include(${CMAKE_CURRENT_LIST_DIR}/KVEmbedShaders.cmake)
  tarnwick_embed_shaders(TarnwickOSGInternal ${CMAKE_SOURCE_DIR}/programs/shaders)
  # The backend reads its resources from the build's resource folder.
  add_dependencies(TarnwickOSGInternal tarnwick_resources)

  # A module: hosts load it, nothing links it.
  set(_export_map ${CMAKE_CURRENT_LIST_DIR}/TarnwickOSG.map)
  add_library(TarnwickOSG MODULE)
  target_link_libraries(TarnwickOSG PRIVATE TarnwickOSGInternal)
  target_link_options(TarnwickOSG PRIVATE -Wl,--version-script=${_export_map} -Wl,--as-needed)
  set_target_properties(TarnwickOSG PROPERTIES LINK_DEPENDS ${_export_map})
endif()
