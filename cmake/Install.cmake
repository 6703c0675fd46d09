# What `cmake --install` gives a host integrator: the module library a host loads, the engine
# as a static library, the headers of both under one include root (include/virelo_json, with
# the paths the sources use: json/JsonValue.h, host/VireloInterfaces.h), the CMake package
# virelo_json (virelo_json::engine, ::sdk, ::module) and the pkg-config file virelo_json.pc.
# Tests, benchmarks, fuzz targets and the project's tools (vhost, jsonfmt) stay in the build.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(VIRELO_JSON_INCLUDE_ROOT ${CMAKE_INSTALL_INCLUDEDIR}/virelo_json)
set(VIRELO_JSON_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/virelo_json)

# The headers a target sees in the build tree are the staged layers (cmake/Layers.cmake); the
# installed include root holds the same files, so the same include lines work in both.
foreach(layer value text msgpack sdk)
    foreach(header IN LISTS VIRELO_JSON_${layer}_HEADERS)
        get_filename_component(folder ${header} DIRECTORY)
        install(FILES ${PROJECT_SOURCE_DIR}/${header}
                DESTINATION ${VIRELO_JSON_INCLUDE_ROOT}/${folder})
    endforeach()
endforeach()

# The engine's headers need C++20 (<bit>); the SDK's need C++17. Users get both through the
# targets; the pkg-config file cannot say it, docs/embedding.md does.
target_compile_features(virelo_json_engine INTERFACE cxx_std_20)
target_compile_features(virelo_json_sdk INTERFACE cxx_std_17)
target_include_directories(virelo_json_engine INTERFACE $<INSTALL_INTERFACE:${VIRELO_JSON_INCLUDE_ROOT}>)
target_include_directories(virelo_json_sdk INTERFACE $<INSTALL_INTERFACE:${VIRELO_JSON_INCLUDE_ROOT}>)

set_target_properties(virelo_json_engine PROPERTIES EXPORT_NAME engine)
set_target_properties(virelo_json_sdk PROPERTIES EXPORT_NAME sdk)
set_target_properties(virelo_json PROPERTIES EXPORT_NAME module)

install(TARGETS virelo_json virelo_json_engine virelo_json_sdk
        EXPORT virelo_json_targets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(EXPORT virelo_json_targets
        NAMESPACE virelo_json::
        FILE virelo_jsonTargets.cmake
        DESTINATION ${VIRELO_JSON_PACKAGE_DIR})

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/virelo_jsonConfig.cmake.in
    ${CMAKE_BINARY_DIR}/package/virelo_jsonConfig.cmake
    INSTALL_DESTINATION ${VIRELO_JSON_PACKAGE_DIR})
# Within one major version a newer module keeps what an older one offered.
write_basic_package_version_file(${CMAKE_BINARY_DIR}/package/virelo_jsonConfigVersion.cmake
    VERSION ${PROJECT_VERSION}
    COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/package/virelo_jsonConfig.cmake
              ${CMAKE_BINARY_DIR}/package/virelo_jsonConfigVersion.cmake
        DESTINATION ${VIRELO_JSON_PACKAGE_DIR})

# pkg-config finds the prefix from the file's own folder, so `cmake --install --prefix P`
# works for any P and an installed tree may move. Absolute install folders stay as given.
if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
    set(VIRELO_JSON_PC_PREFIX ${CMAKE_INSTALL_PREFIX})
else()
    file(RELATIVE_PATH up /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
    string(REGEX REPLACE "/$" "" up ${up})
    set(VIRELO_JSON_PC_PREFIX "\${pcfiledir}/${up}")
endif()
function(virelo_json_pc_path out folder)
    if(IS_ABSOLUTE ${folder})
        set(${out} ${folder} PARENT_SCOPE)
    else()
        set(${out} "\${prefix}/${folder}" PARENT_SCOPE)
    endif()
endfunction()
virelo_json_pc_path(VIRELO_JSON_PC_INCLUDEDIR ${VIRELO_JSON_INCLUDE_ROOT})
virelo_json_pc_path(VIRELO_JSON_PC_LIBDIR ${CMAKE_INSTALL_LIBDIR})
configure_file(${CMAKE_CURRENT_LIST_DIR}/virelo_json.pc.in ${CMAKE_BINARY_DIR}/package/virelo_json.pc
               @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/package/virelo_json.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# Everything the rules above install, without the tests: `cmake --build B --target
# virelo_json_installables` then `cmake --install B`.
add_custom_target(virelo_json_installables)
add_dependencies(virelo_json_installables virelo_json virelo_json_engine)
