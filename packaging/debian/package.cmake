# The Debian package, made by CPack for the release that it runs on.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tolvane)
set(CPACK_PACKAGE_VENDOR "The Tolvane founders")
set(CPACK_PACKAGE_CONTACT "${TOLVANE_MAINTAINER}")
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_SOURCE_DIR}/build/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_BINARY_DIR}/debian/finish.cmake)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_VERSION ${PROJECT_VERSION}${suffix})
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Loaded at run time if they are there. Newer releases have other names for some.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
  "libpipewire-0.3-0t64 | libpipewire-0.3-0, libjack-jackd2-0 | libjack-0.125, libasound2t64 | libasound2, \
libdbus-1-3, rtkit, fonts-noto-color-emoji")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "pipewire, jackd2")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "desktop audio patch bay")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Tolvane routes the channels of one audio device, often an aggregate of
several interfaces. Routes are clicked in a matrix: inputs are rows, outputs
are columns. Each output plays its routed inputs, each times its gain. An edit
takes effect at the device's next cycle, without a dropout.
.
The command tolvanectl does the same without a window, also as a service. It
lists devices, checks patches, and routes recordings.
.
Devices come from PipeWire, JACK or ALSA, whose libraries are loaded if they
are installed.")
include(CPack)
