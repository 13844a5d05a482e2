# pimav_pkg_check(<prefix> <REQUIRED|QUIET> <module>): pkg_check_modules(... IMPORTED_TARGET)
# with an imported target PkgConfig::<prefix> whose properties are the same on every
# configure run.
#
# FindPkgConfig turns a module's "-isystem DIR" flags into include directories only on the
# run that queries pkg-config (libzmq's cflags hold one); later runs build the target from
# the cached query, where the flags are still compile options. Each object's command line
# then changes between the first and the second configure, and everything is rebuilt.
# The macro makes the same move on every run.
macro(pimav_pkg_check prefix mode module)
    pkg_check_modules(${prefix} ${mode} IMPORTED_TARGET ${module})
    if(TARGET PkgConfig::${prefix})
        get_target_property(_pimav_pkg_options PkgConfig::${prefix} INTERFACE_COMPILE_OPTIONS)
        get_target_property(_pimav_pkg_dirs PkgConfig::${prefix} INTERFACE_INCLUDE_DIRECTORIES)
        if(NOT _pimav_pkg_options)
            set(_pimav_pkg_options "")
        endif()
        if(NOT _pimav_pkg_dirs)
            set(_pimav_pkg_dirs "")
        endif()
        set(_pimav_pkg_kept "")
        set(_pimav_pkg_next_is_dir FALSE)
        foreach(_pimav_pkg_option IN LISTS _pimav_pkg_options)
            if(_pimav_pkg_next_is_dir)
                list(APPEND _pimav_pkg_dirs "${_pimav_pkg_option}")
                set(_pimav_pkg_next_is_dir FALSE)
            elseif(_pimav_pkg_option STREQUAL "-isystem")
                set(_pimav_pkg_next_is_dir TRUE)
            elseif(_pimav_pkg_option MATCHES "^-isystem(.+)$")
                list(APPEND _pimav_pkg_dirs "${CMAKE_MATCH_1}")
            else()
                list(APPEND _pimav_pkg_kept "${_pimav_pkg_option}")
            endif()
        endforeach()
        list(REMOVE_DUPLICATES _pimav_pkg_dirs)
        set_target_properties(PkgConfig::${prefix} PROPERTIES
            INTERFACE_INCLUDE_DIRECTORIES "${_pimav_pkg_dirs}"
            INTERFACE_COMPILE_OPTIONS "${_pimav_pkg_kept}")
    endif()
endmacro()
