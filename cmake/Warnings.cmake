# Strict warnings for the project's own targets; third-party headers are included as system.
function(virelo_json_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Werror)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # GCC 12 at -O3 reports impossible overlaps inside libstdc++'s own string code
        # (-Wrestrict false positives on std::string concatenation); nothing of ours is involved.
        target_compile_options(${target} PRIVATE -Wno-restrict)
    endif()
endfunction()
