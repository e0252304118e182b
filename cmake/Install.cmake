# What `cmake --install` puts where: the program, both libraries, the headers of their users, and what finds them.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# The headers that users of the C++ classes include, and what these include, under the names that they have in src/.
foreach(
  header
  config/ConfReader.h
  deform/FaultElement.h
  fault/DynamicParam.h
  fault/Fault.h
  grid/GridShape.h
  grid/InstantVal2d.h
  linear/Linear.h
  okada/DC3D.h
  projection/mapproject.h
  region/Region.h)
  get_filename_component(room "${header}" DIRECTORY)
  install(FILES "${PROJECT_SOURCE_DIR}/src/${header}" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/tidora/${room}")
endforeach()
install(FILES "${PROJECT_SOURCE_DIR}/include/tidora/tidora.h" "${PROJECT_SOURCE_DIR}/include/tidora/tidora.f90"
        DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/tidora")

target_include_directories(tidora PUBLIC "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/tidora>"
                                         "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>")
target_include_directories(tidora_shared PUBLIC "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>")
set(module_folder "$<INSTALL_PREFIX>/${CMAKE_INSTALL_INCLUDEDIR}/tidora")
if(IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
  set(module_folder "${CMAKE_INSTALL_INCLUDEDIR}/tidora")
endif()
target_sources(tidora_fortran INTERFACE "$<INSTALL_INTERFACE:${module_folder}/tidora.f90>")

# What is installed looks for PROJ where it was found, if that is not a folder that the system searches.
set_target_properties(tidora_shared Tidora PROPERTIES INSTALL_RPATH_USE_LINK_PATH ON)
set_target_properties(tidora_shared PROPERTIES EXPORT_NAME c)
set_target_properties(tidora_fortran PROPERTIES EXPORT_NAME fortran)

# The program is not among the exported targets: a system may have the libraries installed without it.
install(TARGETS Tidora RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
install(
  TARGETS tidora tidora_shared tidora_fortran
  EXPORT TidoraTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")

# The manual page of the program, made from the manual. That of tdr is made beside it, for who packages tdr.
find_package(Python3 COMPONENTS Interpreter)
if(Python3_Interpreter_FOUND)
  set(man_pages "${PROJECT_BINARY_DIR}/man/Tidora.1" "${PROJECT_BINARY_DIR}/man/tdr.1")
  add_custom_command(
    OUTPUT ${man_pages}
    COMMAND "${Python3_EXECUTABLE}" -B "${PROJECT_SOURCE_DIR}/scripts/man_pages" "${PROJECT_BINARY_DIR}/man"
    DEPENDS "${PROJECT_SOURCE_DIR}/scripts/man_pages" "${PROJECT_SOURCE_DIR}/docs/manual.md"
            "${PROJECT_SOURCE_DIR}/docs/tdr.md" "${PROJECT_SOURCE_DIR}/CHANGELOG.md" "${PROJECT_SOURCE_DIR}/VERSION"
    VERBATIM)
  add_custom_target(tidora_man ALL DEPENDS ${man_pages})
  install(FILES "${PROJECT_BINARY_DIR}/man/Tidora.1" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
else()
  message(STATUS "No Python: the manual page is not made")
endif()

set(config_folder "${CMAKE_INSTALL_LIBDIR}/cmake/Tidora")
install(
  EXPORT TidoraTargets
  NAMESPACE Tidora::
  DESTINATION "${config_folder}")
configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/TidoraConfig.cmake.in"
                              "${PROJECT_BINARY_DIR}/install/TidoraConfig.cmake" INSTALL_DESTINATION "${config_folder}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/install/TidoraConfigVersion.cmake"
                                 COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/install/TidoraConfig.cmake"
              "${PROJECT_BINARY_DIR}/install/TidoraConfigVersion.cmake" DESTINATION "${config_folder}")

# pkg-config: paths relative to the file itself, so that a tree that was moved is found where it is. Those of a system
# package stay as they are: pkg-config leaves out the folders that compilers search anyway, and knows them by name.
file(RELATIVE_PATH pc_up "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" pc_up "${pc_up}")
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr" OR IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  set(pc_prefix "${CMAKE_INSTALL_PREFIX}")
else()
  set(pc_prefix "\${pcfiledir}/${pc_up}")
endif()
foreach(folder LIBDIR INCLUDEDIR)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${folder}}")
    set(pc_${folder} "${CMAKE_INSTALL_${folder}}")
  else()
    set(pc_${folder} "\${prefix}/${CMAKE_INSTALL_${folder}}")
  endif()
endforeach()
foreach(name tidora tidora-cxx)
  configure_file("${CMAKE_CURRENT_LIST_DIR}/${name}.pc.in" "${PROJECT_BINARY_DIR}/install/${name}.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/install/${name}.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
endforeach()
