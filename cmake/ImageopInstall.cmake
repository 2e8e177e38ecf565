# Installing: the libraries (component imageop_runtime when they are shared) and what a program is built with
# (imageop_development): headers, the CMake package and files for pkg-config. All of them find each other by relative
# paths, so that an installed tree may be moved.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/imageop)
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(TARGETS imageop imageop_platform EXPORT imageop-targets
    LIBRARY COMPONENT imageop_runtime NAMELINK_COMPONENT imageop_development
    ARCHIVE COMPONENT imageop_development)
install(DIRECTORY include/vantu DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT imageop_development)
install(EXPORT imageop-targets NAMESPACE imageop:: DESTINATION ${package_dir} COMPONENT imageop_development)

# A program that links the static library links what that was built with; a shared library brings it along.
get_target_property(library_type imageop TYPE)
set(dependencies "")
set(pkgconfig_requires "")
if(library_type STREQUAL "STATIC_LIBRARY")
    set(dependencies "find_dependency(PNG)\nfind_dependency(JPEG)")
    set(pkgconfig_requires "libpng libjpeg")
    if(NOT IMAGEOP_SCALAR)
        string(APPEND dependencies "\nfind_dependency(hwy)")
        string(APPEND pkgconfig_requires " libhwy")
    endif()
endif()

configure_package_config_file(cmake/imageop-config.cmake.in ${PROJECT_BINARY_DIR}/imageop-config.cmake
    INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/imageop-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/imageop-config.cmake ${PROJECT_BINARY_DIR}/imageop-config-version.cmake
    DESTINATION ${package_dir} COMPONENT imageop_development)

# A folder that the installer names by an absolute path stands as it is; the others move with the tree.
set(pkgconfig_includedir "\${prefix}")
cmake_path(APPEND pkgconfig_includedir "${CMAKE_INSTALL_INCLUDEDIR}")
set(pkgconfig_libdir "\${prefix}")
cmake_path(APPEND pkgconfig_libdir "${CMAKE_INSTALL_LIBDIR}")
file(RELATIVE_PATH pkgconfig_to_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
foreach(name imageop imageop-platform)
    configure_file(cmake/${name}.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${pkgconfig_dir} COMPONENT imageop_development)
endforeach()
