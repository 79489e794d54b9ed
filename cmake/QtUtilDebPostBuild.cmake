# Run by CPack once it has built the Debian packages (CPACK_POST_BUILD_SCRIPTS, with the
# packages in CPACK_PACKAGE_FILES). CPack gives every package with a library under /usr/lib a
# postinst and a postrm that call ldconfig, and has no switch to leave them out; Debian
# refreshes the linker cache through dpkg's ldconfig trigger instead (the runtime package's
# `triggers` file), and lintian rejects the scripts. Each package that has them is rebuilt
# without them, after checking that they are CPack's and do nothing else.
foreach(deb IN LISTS CPACK_PACKAGE_FILES)
  if(NOT deb MATCHES "\\.deb$")
    continue()
  endif()
  set(tree "${deb}.tree")
  file(REMOVE_RECURSE "${tree}")
  execute_process(COMMAND dpkg-deb --raw-extract "${deb}" "${tree}" COMMAND_ERROR_IS_FATAL ANY)
  set(changed FALSE)
  foreach(script_and_action IN ITEMS "postinst;configure" "postrm;remove")
    list(GET script_and_action 0 script)
    list(GET script_and_action 1 action)
    set(path "${tree}/DEBIAN/${script}")
    if(NOT EXISTS "${path}")
      continue()
    endif()
    file(READ "${path}" text)
    set(ldconfig_only "#!/bin/sh\n\nset -e\n\nif [ \"$1\" = \"${action}\" ]; then\n\tldconfig\nfi\n")
    if(NOT text STREQUAL ldconfig_only)
      message(FATAL_ERROR "${deb}: ${script} does more than call ldconfig; not removed:\n${text}")
    endif()
    file(REMOVE "${path}")
    set(changed TRUE)
  endforeach()
  if(changed)
    execute_process(COMMAND dpkg-deb --root-owner-group --build "${tree}" "${deb}"
      OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  endif()
  file(REMOVE_RECURSE "${tree}")
endforeach()
