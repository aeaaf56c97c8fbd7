# Removes what `cmake --install` of the build folder BUILD_FOLDER has put in place, and the folders that it has created,
# unless others have put files into them. DESTDIR has to be the one of the installation.

set(manifest "${BUILD_FOLDER}/install_manifest.txt")
set(noted_folders "${BUILD_FOLDER}/install_folders.txt")
if(NOT EXISTS "${manifest}")
    message(FATAL_ERROR "Nothing is installed from ${BUILD_FOLDER}: there is no ${manifest}")
endif()

file(STRINGS "${manifest}" files)
foreach(file IN LISTS files)
    message(STATUS "Removing $ENV{DESTDIR}${file}")
    file(REMOVE "$ENV{DESTDIR}${file}")
endforeach()

# Deeper folders come first: their names are longer, and begin with those of the others.
file(STRINGS "${noted_folders}" folders)
list(SORT folders ORDER DESCENDING)
foreach(folder IN LISTS folders)
    # It leaves a folder with something in it.
    execute_process(COMMAND rmdir -- "${folder}" RESULT_VARIABLE status ERROR_QUIET)
    if(status EQUAL 0)
        message(STATUS "Removed ${folder}")
    endif()
endforeach()
file(REMOVE "${manifest}" "${noted_folders}")
