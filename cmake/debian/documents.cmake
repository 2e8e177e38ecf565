# Run by CPack before it closes the packages: gives each of them the documents that Debian asks for.
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(work ${CPACK_TOPLEVEL_DIRECTORY}/documents)
configure_file(${CMAKE_CURRENT_LIST_DIR}/changelog.in ${work}/changelog @ONLY)

foreach(component ${CPACK_COMPONENTS_ALL})
    string(TOUPPER ${component} name)
    set(package ${CPACK_TEMPORARY_DIRECTORY}/${component})
    set(documents ${package}/usr/share/doc/${CPACK_DEBIAN_${name}_PACKAGE_NAME})
    file(COPY ${CMAKE_CURRENT_LIST_DIR}/copyright DESTINATION ${documents})
    file(ARCHIVE_CREATE OUTPUT ${documents}/changelog.Debian.gz PATHS ${work}/changelog FORMAT raw
        COMPRESSION GZip COMPRESSION_LEVEL 9 MTIME 0)
    file(ARCHIVE_CREATE OUTPUT ${documents}/changelog.gz PATHS ${CMAKE_CURRENT_LIST_DIR}/../../CHANGELOG.md FORMAT raw
        COMPRESSION GZip COMPRESSION_LEVEL 9 MTIME 0)
endforeach()
