# Loading and unloading the backend as a host does, with dlopen and dlclose.
# The program must not link the backend itself, or it could never unload it.
# It links OpenSceneGraph so that the backend's unload leaves OpenSceneGraph
# (and its plugin registry) loaded, as in a host that uses it elsewhere.
add_executable(binding_module_load_tests ${CMAKE_CURRENT_LIST_DIR}/ModuleLoadProgram.cpp)
# Kept even though the program calls little of it: loaded only with the
# backend, OpenSceneGraph would bind to the backend's copies of its inline
# functions and keep the backend mapped.
target_link_options(binding_module_load_tests PRIVATE -Wl,--no-as-needed)
# The same holds for assimp: loaded only with the backend, the library it
# brings in (draco) has GNU unique symbols, is marked not to be unloaded, and
# keeps the backend mapped with it.
target_link_libraries(binding_module_load_tests PRIVATE
  TarnwickStream TarnwickRender TarnwickCommon ${OPENSCENEGRAPH_LIBRARIES} assimp::assimp ${CMAKE_DL_LIBS}
  GTest::gtest GTest::gtest_main)
target_compile_definitions(binding_module_load_tests PRIVATE
  TARNWICK_OSG_LIBRARY="$<TARGET_FILE:TarnwickOSG>")
add_dependencies(binding_module_load_tests TarnwickOSG)
tarnwick_discover_tests(binding_module_load_tests "unit;binding" 300)
