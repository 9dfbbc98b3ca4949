# Runs the commands NORMAL and VARIANT and fails unless they print the same digests. A command may have several
# words.
foreach(build IN ITEMS NORMAL VARIANT)
    separate_arguments(command UNIX_COMMAND "${${build}}")
    execute_process(COMMAND ${command} OUTPUT_VARIABLE digest_${build} RESULT_VARIABLE result)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "${${build}} ended with ${result}")
    endif()
endforeach()
if(digest_NORMAL STREQUAL "" OR NOT digest_NORMAL STREQUAL digest_VARIANT)
    message(FATAL_ERROR "the digests differ.\nNormal build:\n${digest_NORMAL}${VARIANT}:\n${digest_VARIANT}")
endif()
message(STATUS "${digest_VARIANT}")
