# Tests that drive the program `attalven` from outside, in Python. Exit code 77 means skipped, with a word in the output.
set(attalven_program ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/attalven)
add_test(NAME corpus_oracle
    COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/corpus_oracle.py ${attalven_program}
        ${PROJECT_SOURCE_DIR}/bench/gen_corpus.py)
add_test(NAME compose_roundtrip
    COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/roundtrip.py ${attalven_program})
add_test(NAME python_messages
    COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/python_messages.py ${attalven_program})
add_test(NAME smtp_servers
    COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/smtp_servers.py ${attalven_program}
        ${PROJECT_SOURCE_DIR}/build/peers/exim/usr/sbin/exim4 ${CMAKE_CURRENT_BINARY_DIR}/smtp_servers)
set_tests_properties(corpus_oracle python_messages smtp_servers PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 120)

# The programs of the web mail, run by hand on a site of their build. Their limit on memory leaves no room for sanitizers.
if(NOT ATTALVEN_SANITIZE)
    foreach(name settings mailview mailwrite)
        add_test(NAME host_${name}
            COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/host/${name}.py ${CMAKE_BINARY_DIR})
        set_tests_properties(host_${name} PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 300 RESOURCE_LOCK site)
    endforeach()
endif()

# The web mail in Chromium. A sanitizer build is too slow for it, and other builds look for their site elsewhere.
if(NOT ATTALVEN_SANITIZE AND ATTALVEN_SYSCONFDIR STREQUAL "${CMAKE_BINARY_DIR}/site/conf")
    add_test(NAME host_browser COMMAND node ${CMAKE_CURRENT_SOURCE_DIR}/host/browser/suite.mjs ${CMAKE_BINARY_DIR}
        ${PROJECT_SOURCE_DIR}/build/modules)
    set_tests_properties(host_browser PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 900 RESOURCE_LOCK site
        COST 100)  # the longest begins first
endif()
