# Compiler flags: `attalven_warnings` for everything, `attalven_freestanding` for the library itself, which needs no C++
# runtime: no exceptions, no RTTI, no guarded statics, linked by the C driver.
add_library(attalven_warnings INTERFACE)
target_compile_options(attalven_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
    -Wformat=2 -Werror=format-security -fstack-protector-strong -fstack-clash-protection)
target_include_directories(attalven_warnings INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_definitions(attalven_warnings INTERFACE _FILE_OFFSET_BITS=64 _GNU_SOURCE)
target_link_options(attalven_warnings INTERFACE -Wl,-z,relro,-z,now)

add_library(attalven_freestanding INTERFACE)
target_compile_options(attalven_freestanding INTERFACE -fvisibility=hidden
    $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti -fno-threadsafe-statics -fvisibility-inlines-hidden>)

# The fuzzers see what the library does with their inputs, not only what they do themselves.
if(ATTALVEN_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()

if(ATTALVEN_SANITIZE)
    add_compile_options(-fsanitize=${ATTALVEN_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
    add_link_options(-fsanitize=${ATTALVEN_SANITIZE})
else()
    # Fortified calls need optimisation, and hide from the sanitizers.
    target_compile_options(attalven_freestanding INTERFACE $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>)
endif()
