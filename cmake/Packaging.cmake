# Install rules and the Debian package. The application folder keeps its shape: the program in
# /usr/lib/orvaplccom, with Data, Lang, ProgramErr, drive_c and stations as links into
# /var/lib/orvaplccom, which the package's scripts make writable by the group orvaplccom.
option(ORVA_PACKAGE "Build the manual pages and the Debian package" OFF)
set(ORVA_PACKAGE_VERSION "${PROJECT_VERSION}" CACHE STRING "Version of the Debian package")

set(ORVA_APP_DIR lib/orvaplccom)
set(ORVA_STATE_DIR /var/lib/orvaplccom)
set(ORVA_PKG_DIR ${CMAKE_SOURCE_DIR}/packaging)
# Building the package must not build the tests.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)

install(TARGETS ORVAPLCCOM orvaplccfg RUNTIME DESTINATION ${ORVA_APP_DIR})
# The simulator under the name it has on an installed station; a target of its own, so that it is stripped.
add_executable(orvaplcsim EXCLUDE_FROM_ALL ${CMAKE_SOURCE_DIR}/tools/plcsim/main.cpp)
target_link_libraries(orvaplcsim PRIVATE plcsim)
install(TARGETS orvaplcsim RUNTIME DESTINATION bin)
install(FILES ${ORVA_LANG_FILE} DESTINATION share/orvaplccom/Lang)
install(CODE "
  set(app \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${ORVA_APP_DIR}\")
  file(MAKE_DIRECTORY \"\${app}\" \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/bin\")
  foreach(d Data Lang ProgramErr drive_c stations)
    file(CREATE_LINK ${ORVA_STATE_DIR}/\${d} \"\${app}/\${d}\" SYMBOLIC)
  endforeach()
  file(CREATE_LINK ../${ORVA_APP_DIR}/ORVAPLCCOM \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/bin/orvaplccom\" SYMBOLIC)
  file(CREATE_LINK ../${ORVA_APP_DIR}/orvaplccfg \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/bin/orvaplccfg\" SYMBOLIC)
")
install(FILES ${ORVA_PKG_DIR}/orvaplccom.desktop DESTINATION share/applications)
install(FILES ${ORVA_PKG_DIR}/orvaplccom.svg DESTINATION share/icons/hicolor/scalable/apps)
install(FILES ${ORVA_PKG_DIR}/copyright DESTINATION share/doc/orvaplccom)

if(ORVA_PACKAGE)
  find_program(HELP2MAN help2man REQUIRED)
  find_program(GZIP gzip REQUIRED)
  set(man ${CMAKE_BINARY_DIR}/man)
  string(TIMESTAMP ORVA_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)
  configure_file(${ORVA_PKG_DIR}/changelog.in ${man}/changelog @ONLY)
  add_custom_command(OUTPUT ${man}/orvaplcsim.1.gz ${man}/orvaplccom.1.gz ${man}/orvaplccfg.1.gz ${man}/changelog.gz
    COMMAND ${CMAKE_COMMAND} -E env QT_QPA_PLATFORM=offscreen
            ${HELP2MAN} -N --version-string=${PROJECT_VERSION}
            -n "simulated batching plant controller on a pseudo-terminal"
            -o ${man}/orvaplcsim.1 $<TARGET_FILE:orvaplcsim>
    COMMAND ${CMAKE_COMMAND} -E copy ${ORVA_PKG_DIR}/orvaplccom.1 ${man}/orvaplccom.1
    COMMAND ${CMAKE_COMMAND} -E copy ${ORVA_PKG_DIR}/orvaplccfg.1 ${man}/orvaplccfg.1
    COMMAND ${GZIP} -9nf ${man}/orvaplcsim.1 ${man}/orvaplccom.1 ${man}/orvaplccfg.1
    COMMAND ${GZIP} -9nkf ${man}/changelog
    DEPENDS orvaplcsim ${ORVA_PKG_DIR}/orvaplccom.1 ${ORVA_PKG_DIR}/orvaplccfg.1 ${man}/changelog
    WORKING_DIRECTORY ${man})
  add_custom_target(orva_man ALL DEPENDS ${man}/orvaplcsim.1.gz)
  install(FILES ${man}/orvaplccom.1.gz ${man}/orvaplcsim.1.gz ${man}/orvaplccfg.1.gz DESTINATION share/man/man1)
  install(FILES ${man}/changelog.gz DESTINATION share/doc/orvaplccom)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME orvaplccom)
set(CPACK_PACKAGE_VERSION ${ORVA_PACKAGE_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_CONTACT "ORVAPLCCOM developers <developers@orvaplccom.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "configuration and calibration console of a batching plant's scales")
# CPack puts the summary first and indents the rest itself.
set(CPACK_PACKAGE_DESCRIPTION "The console talks over one serial line to the programmable controller
that weighs and doses a concrete batching plant. Commissioning engineers
and operators set the metering parameters and option bits of up to
fourteen scales, calibrate scales, moisture probes and the skip hoist
while watching AD values and weights live, set sensor loads, vibrator
times and plant functions, name scales and bins, and review the
calibration records.

The package also holds orvaplccfg, which saves every setting of the
controller to a text file, compares and restores it, and orvaplcsim, a
simulated controller on a pseudo-terminal for training and trials
without a plant.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "adduser, fonts-wqy-microhei")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${ORVA_PKG_DIR}/postinst ${ORVA_PKG_DIR}/postrm)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
