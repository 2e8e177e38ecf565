# Adds the library's source tree to this project and checks that all it brings are targets and options named after it.
set(flags_before "${CMAKE_CXX_FLAGS}")
get_cmake_property(cache_before CACHE_VARIABLES)
add_subdirectory(${IMAGEOP_SOURCE} imageop)
get_cmake_property(cache_after CACHE_VARIABLES)

# complain_unless_named(<what> <pattern> NAMES...)
function(complain_unless_named what pattern)
    foreach(name ${ARGN})
        if(NOT name MATCHES "${pattern}")
            message(SEND_ERROR "imageop brings the ${what} ${name}")
        endif()
    endforeach()
endfunction()

function(directories_below directory variable)
    set(all ${directory})
    get_property(children DIRECTORY ${directory} PROPERTY SUBDIRECTORIES)
    foreach(child ${children})
        directories_below(${child} below)
        list(APPEND all ${below})
    endforeach()
    set(${variable} ${all} PARENT_SCOPE)
endfunction()

list(REMOVE_ITEM cache_after ${cache_before})
# The others are what CMake's own project(), find_package() and GNUInstallDirs leave.
complain_unless_named("cache entry"
    "^(IMAGEOP_|imageop_|CMAKE_PROJECT_|CMAKE_INSTALL_|_GNUInstallDirs_|FIND_PACKAGE_MESSAGE_|PNG_|JPEG_|ZLIB_|hwy_)"
    ${cache_after})
if(NOT CMAKE_CXX_FLAGS STREQUAL flags_before)
    message(SEND_ERROR "imageop changes the compiler's flags: ${CMAKE_CXX_FLAGS}")
endif()

directories_below(${IMAGEOP_SOURCE} directories)
foreach(directory ${directories})
    get_property(targets DIRECTORY ${directory} PROPERTY BUILDSYSTEM_TARGETS)
    get_property(tests DIRECTORY ${directory} PROPERTY TESTS)
    complain_unless_named(target "^imageop" ${targets})
    complain_unless_named(test "^none$" ${tests})
endforeach()
