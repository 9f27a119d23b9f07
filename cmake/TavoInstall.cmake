# What `cmake --install` puts under its prefix: the headers by layer under
# include/tavo, the library, the command-line host, the CMake package (the
# target Tavo::tavo) and a pkg-config file.
include(CMakePackageConfigHelpers)

foreach(layer IN LISTS TAVO_LAYERS)
  file(GLOB layer_headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${layer}/*.h)
  install(FILES ${layer_headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tavo/${layer})
endforeach()

install(TARGETS tavo EXPORT TavoTargets ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS tavo_host RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

set(TAVO_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Tavo)
install(EXPORT TavoTargets NAMESPACE Tavo:: DESTINATION ${TAVO_CMAKE_DIR})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/TavoConfig.cmake.in
                              ${PROJECT_BINARY_DIR}/TavoConfig.cmake INSTALL_DESTINATION ${TAVO_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/TavoConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/TavoConfig.cmake ${PROJECT_BINARY_DIR}/TavoConfigVersion.cmake
        DESTINATION ${TAVO_CMAKE_DIR})

# The pkg-config file finds the prefix from where it lies, since the prefix
# is often chosen only at install time (--prefix); the install directories
# are the relative ones GNUInstallDirs gives.
file(RELATIVE_PATH TAVO_PC_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
string(REGEX REPLACE "/$" "" TAVO_PC_PREFIX ${TAVO_PC_PREFIX})
set(TAVO_PC_LIBS "")
if(TAVO_SANITIZE)
  set(TAVO_PC_LIBS " -fsanitize=address,undefined,leak")
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/tavo.pc.in ${PROJECT_BINARY_DIR}/tavo.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tavo.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
