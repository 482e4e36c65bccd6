# Installation: the library and its headers, the command, find_package(Kestrel) and pkg-config.
include(CMakePackageConfigHelpers)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Kestrel)

install(TARGETS kestrel EXPORT KestrelTargets FILE_SET HEADERS)
install(EXPORT KestrelTargets NAMESPACE Kestrel:: DESTINATION ${package_dir})
configure_package_config_file(cmake/KestrelConfig.cmake.in ${PROJECT_BINARY_DIR}/KestrelConfig.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/KestrelConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/KestrelConfig.cmake ${PROJECT_BINARY_DIR}/KestrelConfigVersion.cmake
        DESTINATION ${package_dir})

# kestrel.pc finds the installation from where it lies itself, wherever that is moved.
file(RELATIVE_PATH pc_includedir "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_FULL_INCLUDEDIR}")
# A program that links a static library links the library's own libraries, too.
if(BUILD_SHARED_LIBS)
  set(pc_requires "Imath")
  set(pc_requires_private "icu-i18n icu-uc libhwy")
else()
  set(pc_requires "Imath icu-i18n icu-uc libhwy")
  set(pc_cflags "-DKESTREL_STATIC")
  set(pc_libs "-pthread -ldl")
  install(FILES cmake/FindHighway.cmake DESTINATION ${package_dir})
endif()
configure_file(cmake/kestrel.pc.in ${PROJECT_BINARY_DIR}/kestrel.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kestrel.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
if(KESTREL_BUILD_TOOLS)
  install(TARGETS kestrel_command)
  if(TARGET kestrel_images)
    install(TARGETS kestrel_images)
  endif()
endif()
