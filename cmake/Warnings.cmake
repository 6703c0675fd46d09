# Strict warnings for the project's own targets; third-party headers are included as system.
function(virelo_json_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Werror)
endfunction()
