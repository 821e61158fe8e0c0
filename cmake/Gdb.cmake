# What gdb reads by itself when a process or a core has the library in it: a few lines named after
# the library (gdb's own rule), which lead to src/gdb. They lie beside the library in the build tree,
# and below share/gdb/auto-load, at the library's own path, where it is installed.
set(printers ${CMAKE_INSTALL_DATADIR}/velapolicytranslate/gdb)
set(loader $<TARGET_FILE_NAME:velapolicytranslate>-gdb.py)

set(folder ${CMAKE_SOURCE_DIR}/src/gdb)
configure_file(src/gdb/auto-load.py.in ${CMAKE_BINARY_DIR}/gdb/built.py @ONLY)
file(GENERATE OUTPUT ${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/${loader}
     INPUT ${CMAKE_BINARY_DIR}/gdb/built.py)

# Relative, because the prefix is chosen when it is installed.
file(RELATIVE_PATH folder /${CMAKE_INSTALL_LIBDIR} /${printers})
configure_file(src/gdb/auto-load.py.in ${CMAKE_BINARY_DIR}/gdb/installed.py @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/gdb/installed.py RENAME ${loader} COMPONENT library DESTINATION
    ${CMAKE_INSTALL_DATADIR}/gdb/auto-load\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY src/gdb/vela_gdb DESTINATION ${printers} COMPONENT library
        FILES_MATCHING PATTERN "*.py")
