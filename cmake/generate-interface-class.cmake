# cmake -D QDBUSXML2CPP=… -D XML=… -D KIND=-a|-p -D CLASS=… -D DIRECTORY=… -D NAME=… -P <this file>
# Makes DIRECTORY/NAME.h and .cpp: the adaptor (-a) or proxy (-p) class of the interface described
# by XML.

set(base ${DIRECTORY}/${NAME})
get_filename_component(directory ${base} DIRECTORY)
file(MAKE_DIRECTORY ${directory})
execute_process(
  COMMAND ${QDBUSXML2CPP} -c ${CLASS}
    -i interface/androidversiondata.h -i interface/appsizeinfo.h
    ${KIND} ${base}.h:${base}.cpp ${XML} com.corvo.bramd
  RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "${QDBUSXML2CPP} failed on ${XML}")
endif()

file(READ ${base}.cpp text)
string(REPLACE "#include \"${base}.h\"" "#include \"${NAME}.h\"" text "${text}")
# The generator leaves the variable for the result of an adaptor's method uninitialised. isRunning
# is forwarded to an object that has no such method, so its result is never set: it has to be
# false, not chance.
string(REGEX REPLACE
  "\n    ([A-Za-z]+) ([A-Za-z]+);\n    QMetaObject::invokeMethod"
  "\n    \\1 \\2{};\n    QMetaObject::invokeMethod" text "${text}")
file(WRITE ${base}.cpp "${text}")
