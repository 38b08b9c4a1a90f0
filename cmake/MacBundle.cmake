# The application bundle for macOS.
set(TOLVANE_SIGN_AS "-" CACHE STRING "Identity that signs the bundle; - signs it for this machine only")

# tolvane_mac_bundle(<target>): makes the program a bundle with the icon, and signs it for the hardened runtime with the
# right to audio input: without that right the system gives the IO callback silence, or does not start it.
function(tolvane_mac_bundle target)
  set(mac ${CMAKE_SOURCE_DIR}/packaging/macos)
  target_sources(${target} PRIVATE ${mac}/tolvane.icns)
  set_source_files_properties(${mac}/tolvane.icns PROPERTIES MACOSX_PACKAGE_LOCATION Resources)
  set_target_properties(${target} PROPERTIES
    MACOSX_BUNDLE ON
    MACOSX_BUNDLE_EXECUTABLE_NAME ${target}
    MACOSX_BUNDLE_INFO_PLIST ${mac}/Info.plist.in)
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND codesign --force --options runtime --entitlements ${mac}/entitlements.plist --sign ${TOLVANE_SIGN_AS}
      $<TARGET_BUNDLE_DIR:${target}>
    VERBATIM)
endfunction()
