# One switch for the whole tree, so the module, the host and the tests agree on the runtime.
if(NOT VIRELO_JSON_SANITIZE STREQUAL "")
    # Sanitizers must see every node's lifetime: no small-block pool.
    add_compile_definitions(VIRELO_JSON_NO_POOL)
endif()
if(VIRELO_JSON_SANITIZE STREQUAL "address")
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined
                        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined)
elseif(VIRELO_JSON_SANITIZE STREQUAL "thread")
    add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
    add_link_options(-fsanitize=thread)
elseif(NOT VIRELO_JSON_SANITIZE STREQUAL "")
    message(FATAL_ERROR "VIRELO_JSON_SANITIZE must be empty, 'address' or 'thread'")
endif()
