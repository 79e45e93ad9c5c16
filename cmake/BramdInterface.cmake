# Code made from the published interface; no other build step edits it.

set(BRAMD_INTERFACE_GENERATOR ${CMAKE_CURRENT_LIST_DIR}/generate-interface-class.cmake)

# bramd_add_interface_class(TARGET ADAPTOR|PROXY CLASS NAME)
# A static library of one class, to be included as NAME.h, e.g. "daemon/bramdaemonadaptor.h".
function(bramd_add_interface_class target role class name)
  set(kind_ADAPTOR -a)
  set(kind_PROXY -p)
  set(xml ${PROJECT_SOURCE_DIR}/data/com.corvo.bramd.xml)
  set(directory ${PROJECT_BINARY_DIR}/generated)
  set(base ${directory}/${name})
  add_custom_command(
    OUTPUT ${base}.h ${base}.cpp
    COMMAND ${CMAKE_COMMAND}
      -D QDBUSXML2CPP=$<TARGET_FILE:Qt5::qdbusxml2cpp> -D XML=${xml}
      -D KIND=${kind_${role}} -D CLASS=${class} -D DIRECTORY=${directory} -D NAME=${name}
      -P ${BRAMD_INTERFACE_GENERATOR}
    DEPENDS ${xml} ${BRAMD_INTERFACE_GENERATOR}
    VERBATIM)
  add_library(${target} STATIC ${base}.h ${base}.cpp)
  target_include_directories(${target} PUBLIC ${directory} ${PROJECT_SOURCE_DIR}/src)
  set_target_properties(${target} PROPERTIES CXX_CLANG_TIDY "") # not ours to mend
  target_link_libraries(${target}
    PUBLIC bramd_interface Qt5::Core Qt5::DBus PRIVATE bramd_options)
endfunction()
