# libattalven_support.so: the support library that a calling program links beside libattalven.so, unless it brings its own.
# The static libsodium: the dynamic one would cost every CGI process a tenth of its start for a signature that most never
# make.
find_library(SODIUM_LIBRARY NAMES libsodium.a sodium REQUIRED)
file(GLOB support_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/support/*.cpp)

# The base kit is compiled in a second time: the two libraries do not share internal symbols.
add_library(support_objects OBJECT ${support_sources} ${PROJECT_SOURCE_DIR}/mail/base/text.cpp
    ${PROJECT_SOURCE_DIR}/mail/base/descriptor.cpp ${PROJECT_SOURCE_DIR}/mail/base/file.cpp)
target_link_libraries(support_objects PRIVATE attalven_warnings attalven_freestanding)

add_library(attalven_support SHARED $<TARGET_OBJECTS:support_objects>)
set_target_properties(attalven_support PROPERTIES LINKER_LANGUAGE C SOVERSION ${PROJECT_VERSION_MAJOR}
    VERSION ${PROJECT_VERSION})
target_link_libraries(attalven_support PRIVATE ${SODIUM_LIBRARY})
target_link_options(attalven_support PRIVATE -Wl,--as-needed -Wl,--exclude-libs,ALL -Wl,--gc-sections -Wl,-z,relro,-z,now)
target_include_directories(attalven_support INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/attalven>)

add_library(support_static STATIC $<TARGET_OBJECTS:support_objects>)
target_include_directories(support_static PUBLIC ${PROJECT_SOURCE_DIR})
target_link_libraries(support_static PUBLIC ${SODIUM_LIBRARY})
