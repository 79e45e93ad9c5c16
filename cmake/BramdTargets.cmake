# Warnings and definitions that every target of this project is built with.

option(BRAMD_WERROR "Treat compiler warnings as errors" OFF)

# Reading <QtTest> is two thirds of compiling a test. A compiler cache makes up for that by itself,
# but only without precompiled headers.
set(precompile ON)
if(CMAKE_CXX_COMPILER_LAUNCHER)
  set(precompile OFF)
endif()
option(BRAMD_PCH "Precompile <QtTest> for the tests" ${precompile})

# Linking more than a hundred tests takes minutes with the default linker, seconds with mold.
# What is packaged is linked as Debian links everything.
if(BUILD_TESTING)
  include(CheckLinkerFlag)
  check_linker_flag(CXX -fuse-ld=mold BRAMD_HAS_MOLD)
  if(BRAMD_HAS_MOLD)
    add_link_options(-fuse-ld=mold)
  endif()
endif()

# What no program calls is left out of what is delivered. Sources that are compiled together would
# otherwise bring each other along.
add_link_options($<$<NOT:$<CONFIG:Debug>>:-Wl,--gc-sections>)

add_library(bramd_options INTERFACE)
target_compile_options(bramd_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual
  # Qt's logging macros leave out variadic arguments, which only Clang minds.
  $<$<CXX_COMPILER_ID:Clang>:-Wno-gnu-zero-variadic-macro-arguments>
  # A source that is compiled together with others is taken for a header, whose classes should not
  # use what is in unnamed namespaces.
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<BOOL:${CMAKE_UNITY_BUILD}>>:-Wno-subobject-linkage>
  $<$<NOT:$<CONFIG:Debug>>:-ffunction-sections>
  $<$<NOT:$<CONFIG:Debug>>:-fdata-sections>
  $<$<BOOL:${BRAMD_WERROR}>:-Werror>)
target_compile_definitions(bramd_options INTERFACE
  QT_NO_CAST_FROM_ASCII
  QT_NO_CAST_TO_ASCII
  QT_NO_CAST_FROM_BYTEARRAY
  QT_NO_URL_CAST_FROM_STRING
  QT_NO_FOREACH
  QT_NO_KEYWORDS
  QT_NO_NARROWING_CONVERSIONS_IN_CONNECT
  QT_MESSAGELOGCONTEXT
  QT_STRICT_ITERATORS
  QT_DISABLE_DEPRECATED_BEFORE=0x050F00)

# bramd_add_library(NAME SOURCES file... [LIBRARIES target...])
# One static library of a folder. Includes are written from src/, e.g. "config/daemonconfig.h".
function(bramd_add_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${name} PUBLIC ${ARG_LIBRARIES} PRIVATE bramd_options)
endfunction()

# bramd_precompile_qttest(TARGET [OWNER])
# Compiles a target of test sources with a precompiled <QtTest>: its own, or the one that OWNER has.
# Both have to be linked with Qt5::Network or both without it, on which the contents of <QtTest>
# depend.
function(bramd_precompile_qttest name)
  if(NOT BRAMD_PCH)
    return()
  endif()
  if(ARGC EQUAL 1)
    target_precompile_headers(${name} PRIVATE <QtTest>)
  else()
    target_precompile_headers(${name} REUSE_FROM ${ARGV1})
  endif()
  # What AUTOMOC has made is mostly empty, and loading <QtTest> more than all else it needs.
  set_source_files_properties(
    ${CMAKE_CURRENT_BINARY_DIR}/${name}_autogen/mocs_compilation.cpp
    PROPERTIES SKIP_PRECOMPILE_HEADERS ON)
endfunction()

# bramd_moc(TARGET file...)
# Makes what the sources of a test include at their ends, as AUTOMOC would. That looks through all of
# Qt's headers for macros in which a class could be hidden, in every test anew; ours hide none.
function(bramd_moc name)
  set(directory ${CMAKE_CURRENT_BINARY_DIR}/${name}_moc)
  foreach(source IN LISTS ARGN)
    file(STRINGS ${source} includes REGEX "^#include \".*\\.moc\"$")
    if(includes)
      get_filename_component(base ${source} NAME_WE)
      set(moc ${directory}/${base}.moc)
      add_custom_command(OUTPUT ${moc}
        COMMAND Qt5::moc -o ${moc} ${CMAKE_CURRENT_SOURCE_DIR}/${source}
        DEPENDS ${source} VERBATIM)
      target_sources(${name} PRIVATE ${moc})
    endif()
  endforeach()
  file(MAKE_DIRECTORY ${directory})
  target_include_directories(${name} PRIVATE ${directory})
  set_target_properties(${name} PROPERTIES AUTOMOC OFF)
endfunction()

# bramd_add_test(NAME SOURCES file... LIBRARIES target... [LABELS label...] [SDK_LEVELS level...]
#                [PRIVATE_ROOT] [QTTEST_OF target])
# One Qt Test executable, run by CTest (label "unit" unless another is given). It is linked with
# tests/support, whose base class fails a test on any unexpected warning or critical line.
# With SDK_LEVELS it runs once per level ("none": no runtime image), each time where
# DaemonConfig::androidSdkVersion() finds that level; the environment variable TEST_SDK_LEVEL
# tells the test which one.
# With PRIVATE_ROOT it runs where the fixed paths of the daemon and its neighbours are its own and
# empty (sim/phone/enter): what it writes there, or mounts, nobody else sees.
# QTTEST_OF: whose precompiled <QtTest> it takes (bramd_precompile_qttest), bramd_test_support's
# unless another is given.
function(bramd_add_test name)
  cmake_parse_arguments(ARG "PRIVATE_ROOT" "QTTEST_OF" "SOURCES;LIBRARIES;LABELS;SDK_LEVELS" ${ARGN})
  if(NOT ARG_LABELS)
    set(ARG_LABELS unit)
  endif()
  if(NOT ARG_QTTEST_OF)
    set(ARG_QTTEST_OF bramd_test_support)
  endif()
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE
    ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/sim ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE
    bramd_test_support ${ARG_LIBRARIES} Qt5::Test bramd_options)
  if(NOT ARG_SOURCES MATCHES "\\.h(;|$)") # whose classes AUTOMOC finds
    bramd_moc(${name} ${ARG_SOURCES})
  endif()
  bramd_precompile_qttest(${name} ${ARG_QTTEST_OF})
  set(enter)
  if(ARG_PRIVATE_ROOT)
    set(enter ${PROJECT_SOURCE_DIR}/sim/phone/enter)
  endif()
  if(ARG_SDK_LEVELS)
    foreach(level IN LISTS ARG_SDK_LEVELS)
      add_test(NAME ${name}-${level}
        COMMAND ${enter} ${PROJECT_SOURCE_DIR}/tests/support/at-sdk-level ${level}
                $<TARGET_FILE:${name}>)
      set_tests_properties(${name}-${level} PROPERTIES
        LABELS "${ARG_LABELS}" TIMEOUT 300 ENVIRONMENT "TEST_SDK_LEVEL=${level}")
    endforeach()
  else()
    add_test(NAME ${name} COMMAND ${enter} $<TARGET_FILE:${name}>)
    set_tests_properties(${name} PROPERTIES LABELS "${ARG_LABELS}" TIMEOUT 300)
  endif()
endfunction()
