# Installs BUILD_DIR into a fresh prefix under WORK_DIR, then checks that every installed
# program prints "NAME VERSION" for --version with no LD_LIBRARY_PATH, loading the library
# from that prefix, and that two programs outside the project build and run against the
# prefix: CONSUMER_DIR with find_package, and CONSUMER_DIR/Makefile with pkg-config.

function(run what)
    execute_process(COMMAND ${ARGN} ${run_options} RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE out)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "${what} failed (${status}):\n${out}")
    endif()
    set(run_output "${out}" PARENT_SCOPE)
endfunction()

set(prefix ${WORK_DIR}/prefix)
file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR}/pkg-config)
set(no_env ${CMAKE_COMMAND} -E env --unset=LD_LIBRARY_PATH)

run("install" ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

file(GLOB programs ${prefix}/bin/*)
if(NOT programs)
    message(FATAL_ERROR "no program installed in ${prefix}/bin")
endif()
foreach(program IN LISTS programs)
    get_filename_component(name ${program} NAME)
    run("${name} --version" ${no_env} ${program} --version)
    if(NOT run_output STREQUAL "${name} ${VERSION}\n")
        message(FATAL_ERROR "${name} --version printed \"${run_output}\", not \"${name} ${VERSION}\"")
    endif()
    run("ldd ${name}" ${no_env} ldd ${program})
    string(REGEX MATCH "libpimAvMngApi\\.so[^\n]*" line "${run_output}")
    string(FIND "${line}" "=> ${prefix}/" from_prefix)
    if(from_prefix EQUAL -1)
        message(FATAL_ERROR "${name} does not load the library from ${prefix}: ${line}")
    endif()
endforeach()
list(LENGTH programs count)
message(STATUS "${count} installed programs run from ${prefix}")

set(launcher_option)
if(LAUNCHER)
    set(launcher_option -DCMAKE_CXX_COMPILER_LAUNCHER=${LAUNCHER})
endif()
string(REPLACE ";" " " cxx_flags "${CXX_FLAGS}")
run("find_package consumer: configure" ${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${WORK_DIR}/find-package
    -G ${GENERATOR} -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${CXX} ${launcher_option}
    "-DCMAKE_CXX_FLAGS=${cxx_flags}")
run("find_package consumer: build" ${CMAKE_COMMAND} --build ${WORK_DIR}/find-package)
run("find_package consumer: run" ${no_env} ${WORK_DIR}/find-package/consumer)
message(STATUS "find_package ${run_output}")

string(STRIP "${LAUNCHER} ${CXX}" cxx)
set(run_options WORKING_DIRECTORY ${WORK_DIR}/pkg-config)
run("pkg-config consumer: build" ${CMAKE_COMMAND} -E env PKG_CONFIG_PATH=${prefix}/${LIBDIR}/pkgconfig
    make -f ${CONSUMER_DIR}/Makefile "CXX=${cxx}" "CXXFLAGS=${cxx_flags}")
run("pkg-config consumer: run" ${no_env} ./consumer)
message(STATUS "pkg-config ${run_output}")
