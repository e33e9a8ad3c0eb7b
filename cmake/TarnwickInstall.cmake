# cmake --install: the host libraries and their headers, the backend module,
# its resources and the viewer, with a CMake package and pkg-config files.
#   <prefix>/lib                       libraries and the backend module
#   <prefix>/include/<Library>/        host headers
#   <prefix>/share/tarnwick/resources  what the backend loads by relative name
#   <prefix>/bin                       tarnwick-view
#   <prefix>/lib/cmake/TarnwickOSG     find_package(TarnwickOSG)
#   <prefix>/lib/pkgconfig             pkg-config --variable=backend TarnwickOSG
include(CMakePackageConfigHelpers)

set(TARNWICK_HOST_LIBRARIES TarnwickCommon TarnwickGeometry TarnwickRender TarnwickStream)
set(TARNWICK_INSTALL_RESOURCEDIR ${CMAKE_INSTALL_DATADIR}/tarnwick/resources)
set(TARNWICK_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/TarnwickOSG)

# Installed pieces find each other relative to themselves, so that the tree
# can be moved as a whole.
file(RELATIVE_PATH _lib_from_bin /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
set(CMAKE_INSTALL_RPATH "$ORIGIN;$ORIGIN/${_lib_from_bin}")
foreach(target ${TARNWICK_HOST_LIBRARIES} TarnwickOSG tarnwick-view)
  if(TARGET ${target})
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "${CMAKE_INSTALL_RPATH}")
  endif()
endforeach()
# The host's resource lookup goes from its own folder to the resources.
file(RELATIVE_PATH _resources_from_lib /${CMAKE_INSTALL_LIBDIR} /${TARNWICK_INSTALL_RESOURCEDIR})
if(NOT _resources_from_lib STREQUAL "../share/tarnwick/resources")
  target_compile_definitions(TarnwickCommon PRIVATE TARNWICK_INSTALLED_RESOURCES="${_resources_from_lib}")
endif()

install(TARGETS ${TARNWICK_HOST_LIBRARIES} EXPORT TarnwickOSGTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/host/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT TarnwickOSGTargets NAMESPACE TarnwickOSG:: DESTINATION ${TARNWICK_INSTALL_CMAKEDIR})

set(_pc_names ${TARNWICK_HOST_LIBRARIES})
if(TARGET TarnwickOSG)
  install(TARGETS TarnwickOSG LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
  install(DIRECTORY ${TARNWICK_RESOURCE_DIR}/ DESTINATION ${TARNWICK_INSTALL_RESOURCEDIR})
  list(APPEND _pc_names TarnwickOSG)
endif()
if(TARGET tarnwick-view)
  install(TARGETS tarnwick-view RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

set(TARNWICK_BACKEND_FILE ${CMAKE_SHARED_MODULE_PREFIX}TarnwickOSG${CMAKE_SHARED_MODULE_SUFFIX})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/install/TarnwickOSGConfig.cmake.in
  ${CMAKE_BINARY_DIR}/install/TarnwickOSGConfig.cmake
  INSTALL_DESTINATION ${TARNWICK_INSTALL_CMAKEDIR}
  PATH_VARS CMAKE_INSTALL_LIBDIR TARNWICK_INSTALL_RESOURCEDIR)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/install/TarnwickOSGConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/install/TarnwickOSGConfig.cmake
              ${CMAKE_BINARY_DIR}/install/TarnwickOSGConfigVersion.cmake
  DESTINATION ${TARNWICK_INSTALL_CMAKEDIR})

# One pkg-config file per library; TarnwickOSG.pc brings the four host
# libraries and names the module and the resource folder as variables.
file(RELATIVE_PATH PC_PREFIX_FROM_PC /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" PC_PREFIX_FROM_PC "${PC_PREFIX_FROM_PC}")
set(_pc_requires_TarnwickGeometry "TarnwickCommon")
set(_pc_requires_TarnwickRender "TarnwickGeometry TarnwickCommon")
set(_pc_requires_TarnwickStream "TarnwickRender TarnwickGeometry TarnwickCommon")
set(_pc_requires_TarnwickOSG "TarnwickStream TarnwickRender TarnwickGeometry TarnwickCommon")
foreach(name ${_pc_names})
  set(PC_NAME ${name})
  set(PC_REQUIRES "${_pc_requires_${name}}")
  if(name STREQUAL "TarnwickOSG")
    set(PC_DESCRIPTION "OpenGL rendering backend: load the module named by the variable 'backend'")
    set(PC_LIBS "")
    set(PC_VARIABLES "backend=\${libdir}/${TARNWICK_BACKEND_FILE}\nresourcedir=\${prefix}/${TARNWICK_INSTALL_RESOURCEDIR}\n")
  else()
    set(PC_DESCRIPTION "Host library ${name} of the TarnwickOSG backend")
    set(PC_LIBS "-l${name}")
    set(PC_VARIABLES "")
  endif()
  configure_file(${CMAKE_CURRENT_LIST_DIR}/install/tarnwick.pc.in ${CMAKE_BINARY_DIR}/install/${name}.pc @ONLY)
  install(FILES ${CMAKE_BINARY_DIR}/install/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
