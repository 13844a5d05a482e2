# Writes the gzipped man page OUTPUT of PROGRAM with HELP2MAN, from --help-all (every
# subcommand's help) where the program has it, else --help. The NAME line is the first line
# of the help without its leading "program: ".
set(help_option --help-all)
execute_process(COMMAND ${PROGRAM} ${help_option} OUTPUT_VARIABLE help RESULT_VARIABLE status ERROR_QUIET)
if(NOT status EQUAL 0)
    set(help_option --help)
    execute_process(COMMAND ${PROGRAM} ${help_option} OUTPUT_VARIABLE help RESULT_VARIABLE status)
endif()
if(NOT status EQUAL 0)
    message(FATAL_ERROR "${PROGRAM} --help failed (${status})")
endif()
string(REGEX MATCH "^[^\n]*" first_line "${help}")
string(REGEX REPLACE "^[^:]*: *" "" name "${first_line}")
string(REGEX REPLACE "\\.gz$" "" page "${OUTPUT}")
execute_process(COMMAND ${HELP2MAN} --no-info --section=1 --help-option=${help_option} --name=${name} --output=${page} ${PROGRAM}
    RESULT_VARIABLE status)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "help2man failed on ${PROGRAM} (${status})")
endif()
execute_process(COMMAND ${GZIP} -9nf ${page} RESULT_VARIABLE status)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "gzip failed on ${page} (${status})")
endif()
