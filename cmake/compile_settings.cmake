# One place for the flags that every target of the project shares.

include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

add_library(tovira_settings INTERFACE)
target_include_directories(tovira_settings INTERFACE ${PROJECT_SOURCE_DIR}/include)
target_compile_definitions(tovira_settings INTERFACE _GNU_SOURCE)
target_compile_options(tovira_settings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror
    # Under these names clang looks for more than GCC does.
    $<$<CXX_COMPILER_ID:Clang>:-Wno-sign-conversion;-Wno-missing-braces>)

if(TOVIRA_SANITIZE)
    # The check of virtual calls needs the type information that the product's objects are built without.
    target_compile_options(tovira_settings INTERFACE
        -fsanitize=${TOVIRA_SANITIZE} -fno-sanitize=vptr -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(tovira_settings INTERFACE -fsanitize=${TOVIRA_SANITIZE})
endif()

if(TOVIRA_COVERAGE)
    target_compile_options(tovira_settings INTERFACE --coverage -fprofile-update=atomic)
    target_link_options(tovira_settings INTERFACE --coverage)
endif()

# What the product itself is built with, the tests aside: procedures over static tables need neither exceptions, run-time
# type information nor guarded statics, and without them no C++ runtime stands on the start-up path.
add_library(tovira_product_settings INTERFACE)
target_link_libraries(tovira_product_settings INTERFACE tovira_settings)
target_compile_options(tovira_product_settings INTERFACE -fno-exceptions -fno-rtti -fno-threadsafe-statics)
if(TOVIRA_SANITIZE)
    # The sanitizers do not see when an index leaves its array for what stands behind it in the same object.
    target_compile_definitions(tovira_product_settings INTERFACE _GLIBCXX_ASSERTIONS)
endif()
if(NOT TOVIRA_SANITIZE AND NOT TOVIRA_COVERAGE)
    # The program runs as root on whatever it is given. FORTIFY needs an optimizing compiler; its third level makes calls
    # of the small copies of constant size that the dumps are made of, which then take twice the time.
    target_compile_options(tovira_product_settings INTERFACE
        -fstack-protector-strong -fstack-clash-protection
        $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
    target_link_options(tovira_product_settings INTERFACE
        -static-libstdc++ -static-libgcc -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack -Wl,-z,text -Wl,--as-needed
        # Fewer mappings and page faults at every start, which counts most for a run of one command.
        -Wl,-z,noseparate-code)
    if(CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
        target_compile_options(tovira_product_settings INTERFACE -fcf-protection=full)
    endif()
endif()

# tovira_protect_branches(TARGET): for every program and library that is installed. Indirect branches land on landing pads
# only, and returns where the call came from. The C library's start files have no landing pads: their empty initializers
# are left out, and programs begin at an entry that has one.
function(tovira_protect_branches target)
    if(TOVIRA_SANITIZE OR TOVIRA_COVERAGE OR NOT CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
        return()
    endif()
    target_link_options(${target} PRIVATE
        -Wl,-z,ibt -Wl,-z,shstk -Wl,-init=no_initializer -Wl,-fini=no_finalizer)
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "EXECUTABLE")
        target_sources(${target} PRIVATE ${PROJECT_SOURCE_DIR}/cmake/program_entry.cpp)
        target_link_options(${target} PRIVATE -Wl,--entry=startOnLandingPad)
    endif()
endfunction()
