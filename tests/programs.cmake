# Faults at every call of a folder rewrite: the calls of the library's objects go through kit/faults.c.
enable_language(C)
set(file_calls open64 openat64 __openat64_2 mkostemp64 mkdir socket read pread64 write pwrite64 ftruncate64 fallocate64 fsync rename unlink linkat fchmod fchown
        futimens flock nanosleep fcntl64 fstat64 lstat64 stat64)
set(memory_calls malloc calloc realloc free mmap64 munmap fdopen iconv_open getaddrinfo __getdelim exit)
list(TRANSFORM file_calls PREPEND -Wl,--wrap=)
list(TRANSFORM memory_calls PREPEND -Wl,--wrap=)
add_executable(rewrite_faults rewrite_faults.cpp kit/faults.c)
target_link_libraries(rewrite_faults PRIVATE test_kit)
target_link_options(rewrite_faults PRIVATE ${file_calls})
add_test(NAME rewrite_faults COMMAND rewrite_faults)

# Faults at every allocation and every file call of every exported operation.
add_executable(operation_faults operation_faults.cpp operation_rows.cpp operation_world.cpp kit/faults.c kit/memory_faults.c)
target_link_libraries(operation_faults PRIVATE test_kit)
target_link_options(operation_faults PRIVATE ${file_calls} ${memory_calls})
add_test(NAME operation_faults COMMAND operation_faults)
set_tests_properties(rewrite_faults operation_faults PROPERTIES COST 50)  # the long ones begin first

# The worst mail under limits on memory, stack and processor time, which the sanitizers do not keep.
if(NOT ATTALVEN_SANITIZE)
    add_executable(limits ${PROJECT_SOURCE_DIR}/bench/limits_bench.cpp)
    target_link_libraries(limits PRIVATE attalven_warnings attalven_static support_static)
    add_test(NAME limits COMMAND limits check)
endif()

# What the program shows of the sample mailbox, against the truth that its generator wrote.
add_test(NAME sample_mailbox COMMAND python3 ${CMAKE_CURRENT_SOURCE_DIR}/sample_mailbox.py $<TARGET_FILE:attalven_cmd>)

add_executable(delivery_race delivery_race.cpp)
target_link_libraries(delivery_race PRIVATE test_kit)
add_test(NAME delivery_race COMMAND delivery_race)
