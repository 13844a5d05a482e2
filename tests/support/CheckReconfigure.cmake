# Fails when configuring a build tree a second time changes any build command: the build
# after it would then redo work that was done. A fresh tree in WORK_DIR is configured from
# SOURCE_DIR with GENERATOR and the given OPTIONS (a ;-list of -D settings), its commands
# are listed with NINJA, it is configured again and listed again, and the two lists must
# be the same.
file(REMOVE_RECURSE ${WORK_DIR})

function(configure_and_list out)
    execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${WORK_DIR} -G ${GENERATOR} ${OPTIONS}
                    RESULT_VARIABLE rc OUTPUT_QUIET ERROR_VARIABLE errors)
    if(NOT rc EQUAL 0)
        message(FATAL_ERROR "configure failed: ${errors}")
    endif()
    execute_process(COMMAND ${NINJA} -C ${WORK_DIR} -t commands
                    RESULT_VARIABLE rc OUTPUT_VARIABLE commands ERROR_VARIABLE errors)
    if(NOT rc EQUAL 0)
        message(FATAL_ERROR "ninja -t commands failed: ${errors}")
    endif()
    set(${out} "${commands}" PARENT_SCOPE)
endfunction()

configure_and_list(first)
configure_and_list(second)
file(REMOVE_RECURSE ${WORK_DIR})

if(NOT first STREQUAL second)
    string(REPLACE "\n" ";" first_lines "${first}")
    string(REPLACE "\n" ";" second_lines "${second}")
    list(REMOVE_ITEM second_lines ${first_lines})
    list(GET second_lines 0 changed)
    message(FATAL_ERROR "a second configure changed the build commands, e.g. to:\n${changed}")
endif()
string(REGEX MATCHALL "\n" lines "${first}")
list(LENGTH lines n)
message(STATUS "a second configure keeps all ${n} build commands")
