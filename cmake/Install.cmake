# What `cmake --install` lays down, in three components that are also the packages: the libraries;
# what an agent is built with; the program. All of it can be moved: nothing installed names a path
# of this build.
set(headers ${CMAKE_INSTALL_INCLUDEDIR}/velapolicytranslate)
set(libraries velaframework velamodel velapolicytranslate)

set_target_properties(${libraries} PROPERTIES INSTALL_RPATH $ORIGIN)
install(TARGETS ${libraries} EXPORT VelaPolicyTranslate
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
          COMPONENT library NAMELINK_COMPONENT dev
        INCLUDES DESTINATION ${headers})

# The headers of every floor but those that no agent can reach; tests/project/headers_test.sh holds
# this list against what the headers themselves say.
set(inside Kel/Reckoning.h Kel/TimeOfDay.h Norv/IpAddrParse.h Norv/IpText.h
    common/Handling.h common/Module.h common/Output.h policy/Module.h servicedevice/Module.h)
foreach(floor framework/ model/ common policy servicedevice)
  set(excluded)
  foreach(header ${inside})
    list(APPEND excluded PATTERN ${header} EXCLUDE)
  endforeach()
  install(DIRECTORY src/${floor} DESTINATION ${headers} COMPONENT dev
          FILES_MATCHING PATTERN "*.h" ${excluded})
endforeach()

# find_package(VelaPolicyTranslate) gives VelaPolicyTranslate::velapolicytranslate and the others.
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/VelaPolicyTranslate)
include(CMakePackageConfigHelpers)
set(version_file ${CMAKE_BINARY_DIR}/VelaPolicyTranslateConfigVersion.cmake)
write_basic_package_version_file(${version_file} COMPATIBILITY SameMinorVersion)
install(EXPORT VelaPolicyTranslate FILE VelaPolicyTranslateConfig.cmake DESTINATION ${package}
        NAMESPACE VelaPolicyTranslate:: COMPONENT dev)
install(FILES ${version_file} DESTINATION ${package} COMPONENT dev)

# pkg-config gives the same; it finds the way back from where its files lie.
set(pkgconfig ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH up /${pkgconfig} /)
string(REGEX REPLACE "/$" "" up ${up})
function(vela_pkgconfig library description)
  list(JOIN ARGN " " requires)
  configure_file(packaging/pkgconfig.in ${CMAKE_BINARY_DIR}/${library}.pc @ONLY)
  install(FILES ${CMAKE_BINARY_DIR}/${library}.pc DESTINATION ${pkgconfig} COMPONENT dev)
endfunction()
vela_pkgconfig(velaframework "Objects that tell of their changes")
vela_pkgconfig(velamodel "The entities of both generations of a switch's policy configuration"
    velaframework)
vela_pkgconfig(velapolicytranslate ${PROJECT_DESCRIPTION} velamodel velaframework)

if(TARGET vpm)
  install(TARGETS vpm RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
  install(DIRECTORY yang/ DESTINATION ${CMAKE_INSTALL_DATADIR}/yang COMPONENT tools
          FILES_MATCHING PATTERN "*.yang")
  # Deliberate: below the prefix, where systemd finds the units of /usr and of /usr/local.
  install(FILES packaging/vpm-agent.service DESTINATION lib/systemd/system COMPONENT tools)

  # The program writes its manual page and the completions itself.
  function(vela_install_printed file folder)
    set(printed ${CMAKE_BINARY_DIR}/printed/${file})
    get_filename_component(parent ${printed} DIRECTORY)
    file(MAKE_DIRECTORY ${parent})
    add_custom_command(OUTPUT ${printed} COMMAND vpm ${ARGN} > ${printed} DEPENDS vpm VERBATIM)
    string(REPLACE / _ target printed_${file})
    add_custom_target(${target} ALL DEPENDS ${printed})
    install(FILES ${printed} DESTINATION ${folder} COMPONENT tools)
  endfunction()
  vela_install_printed(vpm.1.gz ${CMAKE_INSTALL_MANDIR}/man1 man | gzip -9n)
  set(share ${CMAKE_INSTALL_DATADIR})
  vela_install_printed(bash/vpm ${share}/bash-completion/completions completion bash)
  vela_install_printed(zsh/_vpm ${share}/zsh/site-functions completion zsh)
  vela_install_printed(fish/vpm.fish ${share}/fish/vendor_completions.d completion fish)
endif()
