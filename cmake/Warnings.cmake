# Compiler warnings shared by every target of the project.
function(pimav_set_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra)
    if(PIMAV_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()
