include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/imageop)

install(TARGETS imageop imageop_platform EXPORT imageop-targets)
install(DIRECTORY include/vantu DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT imageop-targets NAMESPACE imageop:: DESTINATION ${package_dir})

configure_package_config_file(cmake/imageop-config.cmake.in ${PROJECT_BINARY_DIR}/imageop-config.cmake
    INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/imageop-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/imageop-config.cmake ${PROJECT_BINARY_DIR}/imageop-config-version.cmake
    DESTINATION ${package_dir})
