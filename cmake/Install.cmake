# Installed programs find the library through a run path relative to their own folder
# ($ORIGIN/../lib with the default layout), so an install runs from any prefix, and from
# the Debian packages, with no environment set.
file(RELATIVE_PATH PIMAV_BINDIR_TO_LIBDIR ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})

# Installs program `target` into the bindir as part of install component `component`.
function(pimav_install_program target component)
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN/${PIMAV_BINDIR_TO_LIBDIR}")
    install(TARGETS ${target} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT ${component})
endfunction()

# Man pages are written at build time by help2man from the programs' own --help and
# --version, so they always say what the program says. A cross build skips them: its
# programs do not run on the build machine.
find_program(PIMAV_HELP2MAN help2man)
find_program(PIMAV_GZIP gzip)
if(PIMAV_HELP2MAN AND PIMAV_GZIP AND NOT CMAKE_CROSSCOMPILING)
    add_custom_target(man ALL)
elseif(NOT CMAKE_CROSSCOMPILING)
    message(STATUS "help2man or gzip not found: no man pages")
endif()

# Adds the man page of program `target` (section 1) to the `man` target and to the install
# component `component`.
function(pimav_add_man_page target component)
    if(NOT TARGET man)
        return()
    endif()
    set(page ${PROJECT_BINARY_DIR}/man/${target}.1.gz)
    add_custom_command(OUTPUT ${page}
        COMMAND ${CMAKE_COMMAND} -DPROGRAM=$<TARGET_FILE:${target}> -DHELP2MAN=${PIMAV_HELP2MAN}
                -DGZIP=${PIMAV_GZIP} -DOUTPUT=${page} -P ${PROJECT_SOURCE_DIR}/cmake/ManPage.cmake
        DEPENDS ${target} ${PROJECT_SOURCE_DIR}/cmake/ManPage.cmake
        COMMENT "Writing the man page of ${target}"
        VERBATIM)
    add_custom_target(man_${target} DEPENDS ${page})
    add_dependencies(man man_${target})
    install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT ${component})
endfunction()

# The pkg-config file names its prefix relative to its own folder, so it too works from any
# prefix; installs into /usr (the Debian packages) and absolute layouts keep plain paths.
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr" OR IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}"
   OR IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
    set(PIMAV_PC_PREFIX "${CMAKE_INSTALL_PREFIX}")
    set(PIMAV_PC_LIBDIR "${CMAKE_INSTALL_FULL_LIBDIR}")
    set(PIMAV_PC_INCLUDEDIR "${CMAKE_INSTALL_FULL_INCLUDEDIR}")
else()
    file(RELATIVE_PATH pc_to_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
    string(REGEX REPLACE "/$" "" pc_to_prefix "${pc_to_prefix}")
    set(PIMAV_PC_PREFIX "\${pcfiledir}/${pc_to_prefix}")
    set(PIMAV_PC_LIBDIR "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
    set(PIMAV_PC_INCLUDEDIR "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()
