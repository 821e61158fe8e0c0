# The Debian packages that `./dev package` makes with CPack: the libraries, what an agent is built
# with, and the program. Each is a component of what is installed.
option(VELA_PACKAGE "Install what belongs to a Debian package only" OFF)
if(NOT VELA_PACKAGE)
  return()
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME velapolicytranslate)
set(CPACK_PACKAGE_CONTACT
    "VelaPolicyTranslate maintainers <maintainers@velapolicytranslate.invalid>")
set(CPACK_COMPONENTS_ALL library dev tools)
# Strips what is packed; its debug information is a package of its own, NAME-dbgsym.
set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})

set(runtime libvelapolicytranslate${VELA_ABI})
set(same_version "${runtime} (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")

# vela_package(COMPONENT NAME SECTION DESCRIPTION): the first line of the description is the
# package's title.
function(vela_package component name section description)
  string(TOUPPER ${component} upper)
  foreach(field NAME SECTION)
    string(TOLOWER ${field} value)
    set(CPACK_DEBIAN_${upper}_PACKAGE_${field} ${${value}} PARENT_SCOPE)
  endforeach()
  set(CPACK_DEBIAN_${upper}_DESCRIPTION ${description} PARENT_SCOPE)

  set(documents ${CMAKE_INSTALL_DATADIR}/doc/${name})
  install(FILES packaging/debian/copyright DESTINATION ${documents} COMPONENT ${component})
  install(FILES ${CMAKE_BINARY_DIR}/changelog.gz ${CMAKE_BINARY_DIR}/changelog.Debian.gz
          DESTINATION ${documents} COMPONENT ${component})
endfunction()

vela_package(library ${runtime} libs "translation of a switch's policy configuration
The libraries that a network switch's agent loads to keep version 2 of its
policy and service-device configuration equal to version 1: the object
framework, the entities of both generations, and the state machines that
translate.")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${CMAKE_SOURCE_DIR}/packaging/debian/triggers)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

vela_package(dev libvelapolicytranslate-dev libdevel "translation of policies, for building agents
Headers, CMake package and pkg-config files for agents that host the
translation of a network switch's policy configuration from version 1 to
version 2.")
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS ${same_version})

vela_package(tools vpm net "translation of a switch's policy configuration, as a program
Translates documents, replays logs of changes, audits and explains what
became of them, and hosts the translation as a service that answers on a
control socket.")
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS ${same_version})

# An agent's engineer has the documents and the outside agent, who runs the program its documents.
set(documents ${CMAKE_INSTALL_DATADIR}/doc)
install(FILES README.md DESTINATION ${documents}/libvelapolicytranslate-dev COMPONENT dev)
install(DIRECTORY docs DESTINATION ${documents}/libvelapolicytranslate-dev COMPONENT dev
        FILES_MATCHING PATTERN "*.md" PATTERN "*.svg" PATTERN api EXCLUDE)
install(DIRECTORY examples/agent DESTINATION ${documents}/libvelapolicytranslate-dev/examples
        COMPONENT dev)
install(DIRECTORY examples DESTINATION ${documents}/vpm COMPONENT tools
        FILES_MATCHING PATTERN "*.json" PATTERN "*.log" PATTERN agent EXCLUDE)

foreach(file CHANGELOG.md:changelog packaging/debian/changelog:changelog.Debian)
  string(REPLACE : ";" file ${file})
  list(GET file 0 source)
  list(GET file 1 compressed)
  set(compressed ${CMAKE_BINARY_DIR}/${compressed}.gz)
  add_custom_command(OUTPUT ${compressed} VERBATIM
      COMMAND gzip -9nc ${CMAKE_SOURCE_DIR}/${source} > ${compressed} DEPENDS ${source})
  list(APPEND changelogs ${compressed})
endforeach()
add_custom_target(changelogs ALL DEPENDS ${changelogs})

include(CPack)
