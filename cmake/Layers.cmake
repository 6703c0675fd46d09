# The layers of the tree and what each may include. Headers are written as "json/JsonValue.h",
# relative to the project root, but no library target sees the root: each layer's headers are
# staged (as links, keeping their paths) into a folder of their own under build/layers/, and a
# target sees only the folders of the layers below it. Including across a forbidden edge then
# fails to compile; scripts/check-includes.py says the same in plain words.
#
#   engine:   json/ (value model)  <-  json/text/, json/msgpack/ (formats)
#   host:     host/, host/ijson/ (host binding) sees the engine and the SDK
#   module:   module/ sees the host binding and the engine
#   sdk:      the host interfaces alone (host/VireloInterfaces.h, VireloIJSON.h, AutoRefPtr.h,
#             InterfaceImpl.h): what a host such as vhost sees of this project

set(VIRELO_JSON_SDK_HEADERS
    host/AutoRefPtr.h
    host/InterfaceImpl.h
    host/VireloIJSON.h
    host/VireloInterfaces.h)

# virelo_json_layer(<name> GLOBS <patterns...> [EXCLUDE <files...>])
# Stages the headers matching the patterns (relative to the project root) into
# build/layers/<name>/ and makes the INTERFACE target virelo_json_<name>_headers that exposes
# that folder. New headers are picked up at the next build (CONFIGURE_DEPENDS). The staged
# list is left in VIRELO_JSON_<name>_HEADERS, so that installing copies exactly what a layer's
# users see in the build tree.
function(virelo_json_layer name)
    cmake_parse_arguments(ARG "" "" "GLOBS;EXCLUDE" ${ARGN})
    set(patterns)
    foreach(glob ${ARG_GLOBS})
        list(APPEND patterns ${PROJECT_SOURCE_DIR}/${glob})
    endforeach()
    file(GLOB headers LIST_DIRECTORIES false RELATIVE ${PROJECT_SOURCE_DIR} CONFIGURE_DEPENDS
         ${patterns})
    if(ARG_EXCLUDE)
        list(REMOVE_ITEM headers ${ARG_EXCLUDE})
    endif()
    set(root ${CMAKE_BINARY_DIR}/layers/${name})
    file(REMOVE_RECURSE ${root})
    foreach(header ${headers})
        get_filename_component(folder ${root}/${header} DIRECTORY)
        file(MAKE_DIRECTORY ${folder})
        file(CREATE_LINK ${PROJECT_SOURCE_DIR}/${header} ${root}/${header} SYMBOLIC)
    endforeach()
    add_library(virelo_json_${name}_headers INTERFACE)
    target_include_directories(virelo_json_${name}_headers INTERFACE ${root})
    set(VIRELO_JSON_${name}_HEADERS ${headers} PARENT_SCOPE)
endfunction()

virelo_json_layer(value GLOBS json/*.h)
virelo_json_layer(text GLOBS json/text/*.h)
virelo_json_layer(msgpack GLOBS json/msgpack/*.h)
virelo_json_layer(sdk GLOBS ${VIRELO_JSON_SDK_HEADERS})
virelo_json_layer(host GLOBS host/*.h host/ijson/*.h EXCLUDE ${VIRELO_JSON_SDK_HEADERS})
virelo_json_layer(module GLOBS module/*.h)
