# Layout: bin/, lib/, include/attalven/{mail,support}/, manual pages, a pkg-config file and a CMake package (targets
# attalven::attalven and attalven::attalven_support). All of it is relative: an installed tree can be moved.
include(CMakePackageConfigHelpers)
install(TARGETS attalven attalven_support EXPORT attalven LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
file(GLOB headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/mail/*.h)
install(FILES ${headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/attalven/mail)
install(FILES support/host.h support/support.h support/auth_code.h support/page.h support/sock.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/attalven/support)
install(EXPORT attalven NAMESPACE attalven:: FILE attalvenConfig.cmake DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/attalven)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/attalvenConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/attalvenConfigVersion.cmake DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/attalven)
file(RELATIVE_PATH attalven_pc_to_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" attalven_pc_to_prefix ${attalven_pc_to_prefix})
configure_file(${PROJECT_SOURCE_DIR}/cmake/attalven.pc.in ${CMAKE_BINARY_DIR}/attalven.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/attalven.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

foreach(page attalven.1 attalven.3 attalven.conf.5)
    string(REGEX REPLACE ".*[.]" "man" section ${page})
    install(FILES docs/man/${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/${section})
endforeach()

# Programs, which are added behind this line, find the libraries beside them where the linker would not look.
if(NOT CMAKE_INSTALL_PREFIX MATCHES "^/(usr)?$")
    file(RELATIVE_PATH attalven_bin_to_lib ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
    set(CMAKE_INSTALL_RPATH "$ORIGIN/${attalven_bin_to_lib}")
endif()
