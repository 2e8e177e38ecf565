# The target `docs`: the reference of the public headers as HTML in <build>/docs/html. A public name without a text, or
# a text that does not fit its name, fails it. Without Doxygen there is no such target.
find_package(Doxygen 1.9 QUIET)
if(DOXYGEN_FOUND)
    set(DOXYGEN_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/docs)
    set(DOXYGEN_STRIP_FROM_PATH ${PROJECT_SOURCE_DIR}/include)
    set(DOXYGEN_JAVADOC_AUTOBRIEF YES)
    set(DOXYGEN_DISTRIBUTE_GROUP_DOC YES)  # overloads in one @{ @} share the text before the first
    set(DOXYGEN_MACRO_EXPANSION YES)
    set(DOXYGEN_EXPAND_ONLY_PREDEF YES)
    set(DOXYGEN_PREDEFINED "VANTU_API=")
    set(DOXYGEN_EXTRACT_ALL NO)
    set(DOXYGEN_WARN_IF_UNDOCUMENTED YES)
    set(DOXYGEN_WARN_AS_ERROR FAIL_ON_WARNINGS)
    set(DOXYGEN_HAVE_DOT NO)
    set(DOXYGEN_QUIET YES)
    doxygen_add_docs(docs ${PROJECT_SOURCE_DIR}/include/vantu COMMENT "Writing the reference to docs/html")
endif()
