# libattalven.so, and the same objects as a static library for tests and fuzzers, which reach internal functions.
file(GLOB_RECURSE attalven_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/mail/*.cpp)
file(GLOB attalven_public_headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/mail/*.h)

add_library(attalven_objects OBJECT ${attalven_sources})
target_link_libraries(attalven_objects PRIVATE attalven_warnings attalven_freestanding)
target_compile_definitions(attalven_objects PRIVATE ATTALVEN_SYSCONFDIR="${ATTALVEN_SYSCONFDIR}")

if(ATTALVEN_PRECOMPILE)
    target_precompile_headers(attalven_objects PRIVATE mail/base/file.h mail/base/text.h)
endif()

set(attalven_map ${CMAKE_BINARY_DIR}/attalven.map)
add_custom_command(OUTPUT ${attalven_map}
    COMMAND ${PROJECT_SOURCE_DIR}/tools/export-map ${attalven_public_headers} > ${attalven_map}
    DEPENDS ${attalven_public_headers} ${PROJECT_SOURCE_DIR}/tools/export-map VERBATIM)
add_custom_target(attalven_map DEPENDS ${attalven_map})

add_library(attalven SHARED $<TARGET_OBJECTS:attalven_objects>)
add_dependencies(attalven attalven_map)
set_target_properties(attalven PROPERTIES LINKER_LANGUAGE C SOVERSION ${PROJECT_VERSION_MAJOR} VERSION ${PROJECT_VERSION}
    LINK_DEPENDS ${attalven_map})
target_link_options(attalven PRIVATE -Wl,--version-script=${attalven_map} -Wl,-Bsymbolic-functions -Wl,--as-needed
    -Wl,-z,relro,-z,now)
target_include_directories(attalven INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/attalven>)

add_library(attalven_static STATIC $<TARGET_OBJECTS:attalven_objects>)
target_include_directories(attalven_static PUBLIC ${PROJECT_SOURCE_DIR})
