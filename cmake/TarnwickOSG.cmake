# The backend library. Each subsystem is a folder of class header/source
# pairs; all of them build into the one shared library the host loads.
set(TARNWICK_BACKEND_FOLDERS binding viewer scene programs environment effects picking models fbx)

set(_backend_sources "")
foreach(folder ${TARNWICK_BACKEND_FOLDERS})
  file(GLOB _s CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/${folder}/*.cpp)
  list(APPEND _backend_sources ${_s})
endforeach()

# FBX files are read through assimp (Debian's reports version 5.2.4).
find_package(assimp REQUIRED)

if(_backend_sources)
  add_library(TarnwickOSG SHARED ${_backend_sources})
  target_include_directories(TarnwickOSG PUBLIC ${CMAKE_SOURCE_DIR} ${OPENSCENEGRAPH_INCLUDE_DIRS})
  target_link_libraries(TarnwickOSG PUBLIC
    TarnwickStream TarnwickRender TarnwickGeometry TarnwickCommon
    ${OPENSCENEGRAPH_LIBRARIES} OpenGL::GL OpenGL::EGL ${X11_LIBRARIES} Threads::Threads ${CMAKE_DL_LIBS})
  target_link_libraries(TarnwickOSG PRIVATE assimp::assimp)
  # The host unloads the backend; a GNU unique symbol would pin it in memory.
  target_compile_options(TarnwickOSG PRIVATE -fno-gnu-unique)
endif()

if(TARGET TarnwickOSG)
  include(${CMAKE_CURRENT_LIST_DIR}/KVEmbedShaders.cmake)
  tarnwick_embed_shaders(TarnwickOSG ${CMAKE_SOURCE_DIR}/programs/shaders)
  # The library reads its resources from the build's resource folder.
  add_dependencies(TarnwickOSG tarnwick_resources)
endif()
