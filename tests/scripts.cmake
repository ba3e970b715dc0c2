# Tests that drive the program `attalven` from outside, in Python. Exit code 77 means skipped, with a word in the output.
set(attalven_program ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/attalven)
add_test(NAME corpus_oracle
    COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/corpus_oracle.py ${attalven_program}
        ${PROJECT_SOURCE_DIR}/bench/gen_corpus.py)
add_test(NAME python_messages
    COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/python_messages.py ${attalven_program})
add_test(NAME smtp_servers
    COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/smtp_servers.py ${attalven_program}
        ${PROJECT_SOURCE_DIR}/build/peers/exim/usr/sbin/exim4 ${CMAKE_CURRENT_BINARY_DIR}/smtp_servers)
set_tests_properties(corpus_oracle python_messages smtp_servers PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 120)

# The programs of the web mail, run by hand on a site of their build. Their limit on memory leaves no room for sanitizers.
if(NOT ATTALVEN_SANITIZE)
    add_test(NAME host_settings
        COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/host/settings.py ${CMAKE_BINARY_DIR}
            ${PROJECT_SOURCE_DIR}/build/peers/exim/usr/sbin/exim4 ${ATTALVEN_SYSCONFDIR}
            ${CMAKE_CURRENT_BINARY_DIR}/host_settings)
    set_tests_properties(host_settings PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 300 RESOURCE_LOCK site)
    add_test(NAME host_mailview
        COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/host/mailview.py ${CMAKE_BINARY_DIR})
    add_test(NAME host_mailwrite
        COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/host/mailwrite.py ${CMAKE_BINARY_DIR})
    set_tests_properties(host_mailview host_mailwrite PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 300 RESOURCE_LOCK site)
endif()

# The web mail in Chromium. A sanitizer build is too slow for it, and other builds look for their site elsewhere.
if(NOT ATTALVEN_SANITIZE AND ATTALVEN_SYSCONFDIR STREQUAL "${CMAKE_BINARY_DIR}/site/conf")
    add_test(NAME host_browser COMMAND node ${CMAKE_CURRENT_SOURCE_DIR}/host/browser/suite.mjs ${CMAKE_BINARY_DIR}
        ${PROJECT_SOURCE_DIR}/build/modules)
    set_tests_properties(host_browser PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 900 RESOURCE_LOCK site)
endif()
