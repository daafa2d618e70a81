# What a stranger finds after `cmake --install`: the library, its headers, the CMake package,
# a pkg-config file and the command line.
include(CMakePackageConfigHelpers)

set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/MRZiPhoto")
install(
  TARGETS MRZiPhoto
  EXPORT MRZiPhotoTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(
  EXPORT MRZiPhotoTargets
  NAMESPACE MRZiPhoto::
  DESTINATION "${package_folder}")

if(TARGET MRZiPhotoImages)
  install(TARGETS MRZiPhotoImages LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}")
endif()

install(DIRECTORY "${PROJECT_SOURCE_DIR}/resources"
  DESTINATION "${CMAKE_INSTALL_DATADIR}/MRZiPhoto")

get_property(headers GLOBAL PROPERTY mrziphoto_public_headers)
foreach(header IN LISTS headers)
  cmake_path(GET header PARENT_PATH room)
  install(FILES "${PROJECT_SOURCE_DIR}/src/${header}"
    DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/MRZiPhoto/${room}")
endforeach()
install(FILES "${PROJECT_BINARY_DIR}/generated/MRZiPhoto/MRZiPhoto.h"
  DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/MRZiPhoto")

# A shared library brings what it needs; a program that takes the library in has to link that itself.
if(NOT BUILD_SHARED_LIBS)
  set(needs_of_package [[
include(CMakeFindDependencyMacro)
find_dependency(Threads)
find_dependency(PkgConfig)
pkg_check_modules(utf8proc REQUIRED IMPORTED_TARGET libutf8proc)
]])
  set(requires_of_pc "Requires: libutf8proc")
  set(libs_of_pc " -lstdc++ -pthread")
endif()

configure_package_config_file(
  "${PROJECT_SOURCE_DIR}/cmake/MRZiPhotoConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/MRZiPhotoConfig.cmake"
  INSTALL_DESTINATION "${package_folder}"
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(
  "${PROJECT_BINARY_DIR}/MRZiPhotoConfigVersion.cmake"
  COMPATIBILITY SameMinorVersion)
install(
  FILES
    "${PROJECT_BINARY_DIR}/MRZiPhotoConfig.cmake"
    "${PROJECT_BINARY_DIR}/MRZiPhotoConfigVersion.cmake"
  DESTINATION "${package_folder}")

# The prefix is found from where the file lies, so that an installed folder can be moved.
file(RELATIVE_PATH prefix_from_pc
  "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
string(REGEX REPLACE "/$" "" prefix_from_pc "${prefix_from_pc}")
configure_file(
  "${PROJECT_SOURCE_DIR}/cmake/mrziphoto.pc.in" "${PROJECT_BINARY_DIR}/mrziphoto.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/mrziphoto.pc"
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

if(TARGET mrziphoto)
  file(RELATIVE_PATH libraries_from_tool
    "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
  set_target_properties(mrziphoto PROPERTIES INSTALL_RPATH "$ORIGIN/${libraries_from_tool}")
  install(TARGETS mrziphoto RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
endif()
