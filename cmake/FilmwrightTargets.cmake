# SPDX-License-Identifier: MIT
# How every target of the project is compiled, and the helpers that declare programs and tests.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

option(FILMWRIGHT_WARNINGS_AS_ERRORS "Stop the build at a compiler warning" OFF)
set(FILMWRIGHT_SANITIZE "" CACHE STRING "Sanitizers to build with, for example address,undefined")
option(FILMWRIGHT_COVERAGE "Count which lines run; needs clang++" OFF)

add_compile_options(-Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wold-style-cast
                    -Wnon-virtual-dtor -Woverloaded-virtual -Wnull-dereference)
if(NOT CMAKE_UNITY_BUILD) # where other files' names would count
    add_compile_options(-Wshadow)
endif()
if(FILMWRIGHT_WARNINGS_AS_ERRORS)
    add_compile_options(-Werror)
endif()
# What a program has been linked to can't be redirected afterwards: recordings are hostile input.
add_link_options(-Wl,-z,relro,-z,now)
if(FILMWRIGHT_SANITIZE)
    add_compile_options(-fsanitize=${FILMWRIGHT_SANITIZE} -fno-omit-frame-pointer
                        -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${FILMWRIGHT_SANITIZE})
endif()
if(FILMWRIGHT_COVERAGE)
    # Fixed in the program, so that tools count too whose environment the application clears. A file for
    # each process: one that is killed while it adds its counts to a common file spoils it for all.
    set(counters "-fprofile-instr-generate=${CMAKE_BINARY_DIR}/profiles/%p.profraw")
    add_compile_options("${counters}" -fcoverage-mapping)
    add_link_options("${counters}")
endif()

# Strict Qt for everything that uses it; targets without Qt ignore these.
add_compile_definitions(QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS
                        QT_NO_URL_CAST_FROM_STRING QT_DISABLE_DEPRECATED_BEFORE=0x060400)

# filmwright_link_system_tools(NAME...)
# Puts links to tools that the distribution brings beside our own in the resources folder and in the
# private libexec folder.
function(filmwright_link_system_tools)
    file(MAKE_DIRECTORY "${FILMWRIGHT_RESOURCES_DIR}")
    foreach(tool IN LISTS ARGN)
        find_program(FILMWRIGHT_TOOL_${tool} ${tool})
        if(FILMWRIGHT_TOOL_${tool})
            file(CREATE_LINK "${FILMWRIGHT_TOOL_${tool}}" "${FILMWRIGHT_RESOURCES_DIR}/${tool}"
                 SYMBOLIC)
            install(CODE "set(FILMWRIGHT_TOOL \"${FILMWRIGHT_TOOL_${tool}}\")
                          set(FILMWRIGHT_LIBEXECDIR \"${FILMWRIGHT_LIBEXECDIR}\")")
            install(SCRIPT "${PROJECT_SOURCE_DIR}/cmake/InstallToolLink.cmake")
        else()
            message(WARNING "${tool} was not found; scripts/install-dependencies installs it")
        endif()
    endforeach()
endfunction()

# filmwright_program(TARGET)
# A program that people start. It finds the project's own libraries from where it is.
function(filmwright_program target)
    set_target_properties(${target} PROPERTIES
        RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin"
        INSTALL_RPATH "$ORIGIN/../${FILMWRIGHT_LIBDIR}")
    install(TARGETS ${target} RUNTIME DESTINATION "${FILMWRIGHT_BINDIR}")
endfunction()

# filmwright_bundled_tool(TARGET)
# The program is built into the resources folder and installed into the private libexec folder.
function(filmwright_bundled_tool target)
    # A build tree from before the tool was ours has a link there, which nobody may write through.
    if(IS_SYMLINK "${FILMWRIGHT_RESOURCES_DIR}/${target}")
        file(REMOVE "${FILMWRIGHT_RESOURCES_DIR}/${target}")
    endif()
    set_target_properties(${target} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${FILMWRIGHT_RESOURCES_DIR}")
    install(TARGETS ${target} RUNTIME DESTINATION "${FILMWRIGHT_LIBEXECDIR}")
endfunction()

# filmwright_test_options(TARGET)
# Tests spend their time in what they test: to optimise them takes longer than it saves. The QTRY macros of
# newer Qts narrow a number.
function(filmwright_test_options target)
    target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-O0>)
    if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU") # takes each test for a header
        target_compile_options(${target} PRIVATE -Wno-subobject-linkage)
    endif()
    if(Qt6_VERSION VERSION_GREATER_EQUAL 6.5)
        target_compile_options(${target} PRIVATE -Wno-conversion)
    endif()
endfunction()

# filmwright_tests(PROGRAM TESTS NAME... [ON_SESSION_BUS NAME...] [SOURCES FILE...] LIBRARIES LIB...)
# A program of the Qt Tests in NAME.cpp..., known to ctest under their names, with a time limit. Tests never
# reach the buses of the machine: those on a session bus have a private one, for the others there is none.
# The thread sanitizer is told to leave memory alone that the distribution's Qt hands from thread to
# thread by itself (posted events, Qt Test's watchdog): that Qt is built without the sanitizer, which
# therefore doesn't see its locks. Every access made by our own code is still checked.
set(FILMWRIGHT_TESTS_DIR "${CMAKE_CURRENT_LIST_DIR}/../tests")
function(filmwright_tests program)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "TESTS;ON_SESSION_BUS;SOURCES;LIBRARIES")
    set(tests ${arg_TESTS} ${arg_ON_SESSION_BUS})
    list(TRANSFORM tests APPEND .cpp OUTPUT_VARIABLE sources)
    add_executable(${program} ${sources} ${arg_SOURCES} "${FILMWRIGHT_TESTS_DIR}/support/testprogram.cpp")
    if(FILMWRIGHT_SANITIZE MATCHES thread)
        target_sources(${program} PRIVATE "${FILMWRIGHT_TESTS_DIR}/support/threadsanitizerclone.cpp")
    endif()
    set_target_properties(${program} PROPERTIES AUTOMOC ON)
    filmwright_test_options(${program})
    target_include_directories(${program} PRIVATE "${FILMWRIGHT_TESTS_DIR}")
    target_link_libraries(${program} PRIVATE ${arg_LIBRARIES} Qt6::Test)
    foreach(test IN LISTS tests)
        set(private_bus)
        if(test IN_LIST arg_ON_SESSION_BUS)
            set(private_bus dbus-run-session
                "--config-file=${FILMWRIGHT_TESTS_DIR}/support/privatebus.conf" --)
        endif()
        add_test(NAME ${test} COMMAND ${private_bus} $<TARGET_FILE:${program}> ${test})
        set_tests_properties(${test} PROPERTIES TIMEOUT 900 ENVIRONMENT
            "QT_QPA_PLATFORM=offscreen;DBUS_SESSION_BUS_ADDRESS=disabled:;DBUS_SYSTEM_BUS_ADDRESS=disabled:;TSAN_OPTIONS=ignore_noninstrumented_modules=1;FILMWRIGHT_TEST_DATA=${FILMWRIGHT_TESTS_DIR}/data;FILMWRIGHT_BUILD_RESOURCES=${FILMWRIGHT_RESOURCES_DIR}")
    endforeach()
endfunction()

# filmwright_threaded_tests(PROGRAM NAME...)
# Marks tests that exercise threads: they are what the thread sanitizer is run on, and the target
# threaded_tests builds them.
function(filmwright_threaded_tests program)
    set_tests_properties(${ARGN} PROPERTIES LABELS threads)
    if(NOT TARGET threaded_tests)
        add_custom_target(threaded_tests)
    endif()
    add_dependencies(threaded_tests ${program})
endfunction()
