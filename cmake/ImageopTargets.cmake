# What every target of this project is compiled with; nothing of it reaches a parent project or a consumer.
function(imageop_compile_options target)
    target_compile_features(${target} PUBLIC cxx_std_20)
    set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF POSITION_INDEPENDENT_CODE ON)
    # Double results are defined operation by operation, so no multiply and add may be fused.
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -ffp-contract=off
        $<$<BOOL:${IMAGEOP_WARNINGS_AS_ERRORS}>:-Werror>)
endfunction()

# imageop_library(<name> SOURCES...): the target imageop_<name>, known as imageop::<name>, with the public headers.
function(imageop_library name)
    if(name STREQUAL "imageop")
        set(target imageop)
    else()
        set(target imageop_${name})
    endif()
    add_library(${target} ${ARGN})
    add_library(imageop::${name} ALIAS ${target})
    set_target_properties(${target} PROPERTIES
        EXPORT_NAME ${name}
        DEFINE_SYMBOL ""
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)
    imageop_compile_options(${target})
    # What a fuzz target compares the library with runs unobserved, and so faster.
    target_compile_options(${target} PRIVATE $<$<BOOL:${IMAGEOP_BUILD_FUZZ}>:-fsanitize=fuzzer-no-link>)
    target_include_directories(${target} PUBLIC
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "SHARED_LIBRARY" AND UNIX AND NOT APPLE)
        target_link_options(${target} PRIVATE
            LINKER:--version-script=${PROJECT_SOURCE_DIR}/cmake/shown-symbols.map)
        set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/shown-symbols.map)
    endif()
endfunction()

# imageop_choose_vectors(<target>): gives a test program the means to run vector code on any instruction set of the build.
function(imageop_choose_vectors target)
    target_sources(${target} PRIVATE ${PROJECT_SOURCE_DIR}/tests/support/VectorTargets.cpp)
    if(NOT IMAGEOP_SCALAR)
        target_compile_definitions(${target} PRIVATE IMAGEOP_TEST_VECTORS)
        target_link_libraries(${target} PRIVATE hwy::hwy)
    endif()
endfunction()
