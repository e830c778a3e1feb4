# The build's common rules: one interface target for warnings and sanitizers, the product tree inside
# the build folder, and the functions with which every folder declares its one target.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release)
endif()

# A complete product root (bin, lib, data, share) inside the build folder, so that programs find their
# modules and data through KES_ROOT before anything is installed.
set(VELOX_STAGE "${CMAKE_BINARY_DIR}/stage")
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${VELOX_STAGE}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${VELOX_STAGE}/lib")
set(CMAKE_INSTALL_RPATH "$ORIGIN;$ORIGIN/../lib")

add_library(velox_settings INTERFACE)
target_compile_definitions(velox_settings INTERFACE _GNU_SOURCE
  VELOX_VERSION="${PROJECT_VERSION}")
target_compile_options(velox_settings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
  -fstack-protector-strong -fno-omit-frame-pointer)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # Optimised, GCC 12 takes any `"literal" + std::string` for an overlapping copy.
  target_compile_options(velox_settings INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)
endif()
target_link_options(velox_settings INTERFACE -Wl,--no-undefined -Wl,-z,relro,-z,now)
if(VELOX_SANITIZE)
  target_compile_options(velox_settings INTERFACE
    -fsanitize=${VELOX_SANITIZE} -fno-sanitize-recover=all)
  target_link_options(velox_settings INTERFACE -fsanitize=${VELOX_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    # clang leaves the sanitizer's symbols of a shared library to the program.
    set_property(TARGET velox_settings PROPERTY INTERFACE_LINK_OPTIONS
      -Wl,-z,relro,-z,now -fsanitize=${VELOX_SANITIZE})
  endif()
else()
  target_compile_definitions(velox_settings INTERFACE
    $<$<CONFIG:Release,RelWithDebInfo>:_FORTIFY_SOURCE=2>)
endif()
if(VELOX_BUILD_FUZZERS)
  # The fuzzer follows what it reaches in the libraries too.
  target_compile_options(velox_settings INTERFACE -fsanitize=fuzzer-no-link)
endif()

# The code of src/: no exceptions, no run-time type information.
add_library(velox_plain_settings INTERFACE)
target_link_libraries(velox_plain_settings INTERFACE velox_settings)
target_compile_options(velox_plain_settings INTERFACE
  $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti>)

# velox_target(NAME STATIC|SHARED|MODULE|EXECUTABLE
#   SOURCES file...         the target's own sources
#   PUBLIC target...        what its headers need
#   PRIVATE target...       what only its sources need
#   EXPORTS file            version script: the exported symbols of a shared library
#   PLAIN                   built without exceptions and run-time type information)
# The folder's include/ is its only exported include folder; its sources see the folder itself too.
function(velox_target name kind)
  cmake_parse_arguments(PARSE_ARGV 2 arg "PLAIN" "EXPORTS" "SOURCES;PUBLIC;PRIVATE")
  if(kind STREQUAL "EXECUTABLE")
    add_executable(${name} ${arg_SOURCES})
  else()
    add_library(${name} ${kind} ${arg_SOURCES})
  endif()
  if(arg_PLAIN)
    target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:velox_plain_settings>)
  else()
    target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:velox_settings>)
  endif()
  target_link_libraries(${name} PUBLIC ${arg_PUBLIC} PRIVATE ${arg_PRIVATE})
  target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
  if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/include)
    target_include_directories(${name} PUBLIC
      $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/include>)
  endif()
  if(arg_EXPORTS)
    target_link_options(${name} PRIVATE
      -Wl,--version-script=${CMAKE_CURRENT_SOURCE_DIR}/${arg_EXPORTS})
    set_property(TARGET ${name} PROPERTY LINK_DEPENDS
      ${CMAKE_CURRENT_SOURCE_DIR}/${arg_EXPORTS})
    # For the test that compares the list with the library.
    set_property(TARGET ${name} PROPERTY VELOX_EXPORTS
      ${CMAKE_CURRENT_SOURCE_DIR}/${arg_EXPORTS})
  endif()
endfunction()

# velox_quick_start(NAME): the C++ runtime goes into the target, because loading it as a shared library
# takes longer than what a short command does. Sanitizers need the shared one.
function(velox_quick_start name)
  if(NOT VELOX_SANITIZE)
    target_link_options(${name} PRIVATE -static-libstdc++ -static-libgcc -Wl,--gc-sections)
  endif()
endfunction()

# velox_shared_library(NAME ...): a public library of the product, installed with its headers.
function(velox_shared_library name)
  velox_target(${name} SHARED ${ARGN})
  set_property(GLOBAL APPEND PROPERTY VELOX_LIBRARIES ${name})
  set_target_properties(${name} PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
  install(TARGETS ${name} LIBRARY DESTINATION lib)
  if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/include)
    install(DIRECTORY include/ DESTINATION include)
  endif()
endfunction()

# velox_module(FILE ...): a run-time module, named FILE.dll in the product's lib folder.
function(velox_module name)
  velox_target(${name} MODULE ${ARGN})
  set_property(GLOBAL APPEND PROPERTY VELOX_LIBRARIES ${name})
  set_target_properties(${name} PROPERTIES PREFIX "" SUFFIX ".dll")
  # The libraries below (GLib, libcurl) do not survive being unloaded.
  target_link_options(${name} PRIVATE -Wl,-z,nodelete)
  install(TARGETS ${name} LIBRARY DESTINATION lib)
endfunction()

# velox_program(NAME ...): a program of the product.
function(velox_program name)
  velox_target(${name} EXECUTABLE ${ARGN})
  install(TARGETS ${name} RUNTIME DESTINATION bin)
endfunction()
