# cmake -D QDBUSXML2CPP=… -D XML=… -D HEADER=… -D SOURCE=… -P generateproxy.cmake
# Makes the proxy class of the interface described by XML.

get_filename_component(directory ${HEADER} DIRECTORY)
file(MAKE_DIRECTORY ${directory})
execute_process(
  COMMAND ${QDBUSXML2CPP} -c BramdProxy
    -i interface/androidversiondata.h -i interface/appsizeinfo.h
    -p ${HEADER}:${SOURCE} ${XML} com.corvo.bramd
  RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "${QDBUSXML2CPP} failed on ${XML}")
endif()

file(READ ${SOURCE} text)
string(REPLACE "#include \"${HEADER}\"" "#include \"tools/common/bramdproxy.h\"" text "${text}")
file(WRITE ${SOURCE} "${text}")
