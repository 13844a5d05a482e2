# API reference: the `docs` target runs Doxygen over the public headers, README.md as the
# main page, into <build>/docs/html. Any warning fails it, an undocumented public class or
# member included; the `docs` test keeps it that way.
find_package(Doxygen QUIET)
if(NOT DOXYGEN_FOUND)
    message(STATUS "doxygen not found: no docs target")
    return()
endif()
configure_file(${PROJECT_SOURCE_DIR}/docs/Doxyfile.in ${PROJECT_BINARY_DIR}/Doxyfile @ONLY)
add_custom_target(docs
    COMMAND Doxygen::doxygen ${PROJECT_BINARY_DIR}/Doxyfile
    COMMENT "Writing the API reference into ${PROJECT_BINARY_DIR}/docs/html"
    VERBATIM)
if(PIMAV_BUILD_TESTS)
    # By path, not by target name: ctest would run a target through the cross build's
    # emulator, and doxygen is a program of the build machine.
    add_test(NAME docs COMMAND ${DOXYGEN_EXECUTABLE} ${PROJECT_BINARY_DIR}/Doxyfile)
endif()
