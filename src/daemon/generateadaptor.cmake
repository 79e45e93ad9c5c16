# cmake -D QDBUSXML2CPP=… -D XML=… -D HEADER=… -D SOURCE=… -P generateadaptor.cmake
# Makes the adaptor class of the interface described by XML.

get_filename_component(directory ${HEADER} DIRECTORY)
file(MAKE_DIRECTORY ${directory})
execute_process(
  COMMAND ${QDBUSXML2CPP} -c BramDaemonAdaptor
    -i interface/androidversiondata.h -i interface/appsizeinfo.h
    -a ${HEADER}:${SOURCE} ${XML} com.corvo.bramd
  RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "${QDBUSXML2CPP} failed on ${XML}")
endif()

file(READ ${SOURCE} text)
string(REPLACE "#include \"${HEADER}\"" "#include \"daemon/bramdaemonadaptor.h\"" text "${text}")
# The generator leaves the variable for a method's result uninitialised. isRunning is forwarded to
# an object that has no such method, so its result is never set: it has to be false, not chance.
string(REGEX REPLACE
  "\n    ([A-Za-z]+) ([A-Za-z]+);\n    QMetaObject::invokeMethod"
  "\n    \\1 \\2{};\n    QMetaObject::invokeMethod" text "${text}")
file(WRITE ${SOURCE} "${text}")
