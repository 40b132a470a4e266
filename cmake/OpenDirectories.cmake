# Lets everybody read and enter the directories of a package, whatever the umask of the shell that runs cpack: CMake's own
# variables for these modes are subject to the umask.

file(CHMOD_RECURSE ${CPACK_TEMPORARY_DIRECTORY} DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
