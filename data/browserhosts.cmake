# Run when installing (see CMakeLists.txt): the script the browsers start as the extension's native
# host and the two manifests naming it, written with the prefix of this very install. Chromium
# reads system manifests from /etc/chromium only, so an install under /usr puts its manifest
# there; any other prefix keeps all of it under itself.
set(prefix "${CMAKE_INSTALL_PREFIX}")
set(BINDIR "${prefix}/${BINDIR_NAME}")
set(HOST "${prefix}/${LIBEXECDIR_NAME}/corvane/corvane-native-host")
if(prefix STREQUAL "/usr")
  set(etc /etc)
else()
  set(etc "${prefix}/etc")
endif()
set(ORIGINS)
foreach(id IN LISTS CHROMIUM_IDS)
  list(APPEND ORIGINS "\"chrome-extension://${id}/\"")
endforeach()
list(JOIN ORIGINS ", " ORIGINS)

configure_file(${SOURCE_DIR}/corvane-native-host.in ${STAGE_DIR}/corvane-native-host @ONLY)
configure_file(${SOURCE_DIR}/nativehost-chromium.json.in ${STAGE_DIR}/chromium/corvane.json @ONLY)
configure_file(${SOURCE_DIR}/nativehost-firefox.json.in ${STAGE_DIR}/firefox/corvane.json @ONLY)
file(INSTALL ${STAGE_DIR}/corvane-native-host DESTINATION "${prefix}/${LIBEXECDIR_NAME}/corvane"
     FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ
                      WORLD_EXECUTE)
file(INSTALL ${STAGE_DIR}/chromium/corvane.json DESTINATION "${etc}/chromium/native-messaging-hosts")
file(INSTALL ${STAGE_DIR}/firefox/corvane.json DESTINATION "${prefix}/lib/mozilla/native-messaging-hosts")
