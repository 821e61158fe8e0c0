# What `cmake --install` lays down: the three libraries, the headers that an agent includes, the
# YANG modules, and the program.
install(TARGETS velaframework velamodel velapolicytranslate
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
set(headers ${CMAKE_INSTALL_INCLUDEDIR}/velapolicytranslate)
foreach(folder framework model)
  install(DIRECTORY src/${folder}/ DESTINATION ${headers} FILES_MATCHING PATTERN "*.h")
endforeach()
foreach(folder common policy servicedevice)
  install(DIRECTORY src/${folder} DESTINATION ${headers} FILES_MATCHING PATTERN "*.h")
endforeach()
install(DIRECTORY yang/ DESTINATION ${CMAKE_INSTALL_DATADIR}/yang FILES_MATCHING PATTERN "*.yang")
if(TARGET vpm)
  install(TARGETS vpm RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
