# Runs the command after "--" and checks its exit status (EXPECT_EXIT) and, when given, that
# its standard output and error match the regular expressions EXPECT_OUT and EXPECT_ERR.
# INPUT names a file to give it as standard input (none: standard input is empty).
#   cmake -DEXPECT_EXIT=2 -DEXPECT_ERR=regex [-DINPUT=file] -P RunVhost.cmake -- vhost ARGS...
set(command)
set(collect OFF)
math(EXPR last "${CMAKE_ARGC} - 1")
foreach(i RANGE ${last})
    if(collect)
        list(APPEND command "${CMAKE_ARGV${i}}")
    elseif(CMAKE_ARGV${i} STREQUAL "--")
        set(collect ON)
    endif()
endforeach()

if(NOT INPUT)
    set(INPUT /dev/null)
endif()
execute_process(COMMAND ${command} INPUT_FILE ${INPUT}
                RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
set(problems "")
if(NOT status STREQUAL EXPECT_EXIT)
    string(APPEND problems "exit status ${status}, expected ${EXPECT_EXIT}\n")
endif()
if(NOT EXPECT_OUT STREQUAL "" AND NOT out MATCHES "${EXPECT_OUT}")
    string(APPEND problems "standard output does not match: ${EXPECT_OUT}\n")
endif()
if(NOT EXPECT_ERR STREQUAL "" AND NOT err MATCHES "${EXPECT_ERR}")
    string(APPEND problems "standard error does not match: ${EXPECT_ERR}\n")
endif()
if(NOT problems STREQUAL "")
    message(FATAL_ERROR "${problems}--- standard output:\n${out}--- standard error:\n${err}")
endif()
