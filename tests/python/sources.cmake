# The sources that the tests of the Python package read, made anew: run.raw and report.rpt, a simulated acquisition and a report;
# all.raw, with every type of function and every data layout; and those of make_sources.
file(REMOVE_RECURSE ${FOLDER})
file(MAKE_DIRECTORY ${FOLDER})
foreach(command "${MAKE_SAMPLE};run.raw" "${MAKE_SAMPLE};report.rpt" "${MAKE_DIRECTORY};all.raw" "${MAKE_SOURCES};.")
  execute_process(COMMAND ${command} WORKING_DIRECTORY ${FOLDER} COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
endforeach()
