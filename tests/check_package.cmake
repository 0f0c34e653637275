# Builds the Debian package from the build tree and checks what it installs and depends on.
execute_process(COMMAND ${CMAKE_COMMAND} -E rm -rf ${WORK_DIR})
execute_process(COMMAND ${CPACK} -G DEB --config ${BUILD_DIR}/CPackConfig.cmake -B ${WORK_DIR}
                RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
file(GLOB packages ${WORK_DIR}/corvane_*.deb)
if(NOT result EQUAL 0 OR NOT packages)
  message(FATAL_ERROR "cpack failed:\n${output}")
endif()
execute_process(COMMAND dpkg-deb --contents ${packages} OUTPUT_VARIABLE contents)
foreach(file
    ./usr/bin/corvane
    ./usr/share/applications/corvane.desktop
    ./usr/share/metainfo/org.corvane.Corvane.metainfo.xml
    ./usr/share/icons/hicolor/scalable/apps/corvane.svg
    ./usr/share/icons/hicolor/48x48/apps/corvane.png
    ./usr/share/corvane/msg/ding.wav
    ./usr/share/corvane/msg/download.gif
    ./usr/share/corvane/help.html
    ./usr/share/corvane/inicio.html
    ./usr/share/corvane/extension/manifest.json
    ./usr/share/corvane/extension/background.js
    ./usr/share/corvane/extension/options.html
    ./usr/share/corvane/extension/icons/corvane-48.png
    ./usr/libexec/corvane/corvane-native-host
    ./etc/chromium/native-messaging-hosts/corvane.json
    ./usr/lib/mozilla/native-messaging-hosts/corvane.json)
  string(FIND "${contents}" " ${file}\n" at)
  if(at EQUAL -1)
    message(FATAL_ERROR "The package lacks ${file}:\n${contents}")
  endif()
endforeach()

# The browsers start the host script, which runs the installed program; each manifest names it
# and allows the extension; the Chromium one, in /etc, is kept through upgrades.
set(root ${WORK_DIR}/root)
execute_process(COMMAND dpkg-deb -x ${packages} ${root})
file(READ ${root}/usr/libexec/corvane/corvane-native-host host)
file(READ ${root}/etc/chromium/native-messaging-hosts/corvane.json chromium)
file(READ ${root}/usr/lib/mozilla/native-messaging-hosts/corvane.json firefox)
list(TRANSFORM CHROMIUM_IDS REPLACE "(.+)" "chrome-extension://\\1/" OUTPUT_VARIABLE origins)
set(manifests chromium firefox)
set(keys allowed_origins allowed_extensions)
foreach(manifest key IN ZIP_LISTS manifests keys)
  string(JSON path GET "${${manifest}}" path)
  string(JSON allowed GET "${${manifest}}" ${key})
  if(key STREQUAL allowed_extensions)
    set(origins ${FIREFOX_ID})
  endif()
  string(JOIN "\", \"" origins ${origins})
  if(NOT path STREQUAL "/usr/libexec/corvane/corvane-native-host" OR
     NOT allowed MATCHES "^\\[ *\"${origins}\" *\\]\n?$")
    message(FATAL_ERROR "The ${manifest} manifest is not the host's:\n${${manifest}}")
  endif()
endforeach()
execute_process(COMMAND dpkg-deb --info ${packages} conffiles OUTPUT_VARIABLE conffiles)
if(NOT host MATCHES "\nexec '/usr/bin/corvane' --native-host \"\\$@\"\n" OR
   NOT conffiles STREQUAL "/etc/chromium/native-messaging-hosts/corvane.json\n")
  message(FATAL_ERROR "The host script or the package's conffiles:\n${host}\n${conffiles}")
endif()
execute_process(COMMAND dpkg-deb --field ${packages} Depends OUTPUT_VARIABLE depends)
foreach(dependency libqt6widgets6 libqt6webenginecore6 libqt6multimedia6 qt6-qpa-plugins)
  string(FIND "${depends}" "${dependency}" at)
  if(at EQUAL -1)
    message(FATAL_ERROR "The package does not depend on ${dependency}: ${depends}")
  endif()
endforeach()
# The launcher and the software centre's entry, as installed, pass the desktop's own checks.
execute_process(COMMAND dpkg-deb --extract ${packages} ${WORK_DIR}/root)
foreach(check
    "desktop-file-validate;usr/share/applications/corvane.desktop"
    "appstreamcli;validate;--no-net;usr/share/metainfo/org.corvane.Corvane.metainfo.xml")
  list(GET check 0 tool)
  unset(found)
  find_program(found ${tool} NO_CACHE)
  if(NOT found)
    message(FATAL_ERROR "${tool} is missing: scripts/setup.sh installs it")
  endif()
  execute_process(COMMAND ${check} WORKING_DIRECTORY ${WORK_DIR}/root
                  RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${check} fails:\n${output}")
  endif()
endforeach()
execute_process(COMMAND ${CMAKE_COMMAND} -E rm -rf ${WORK_DIR})
