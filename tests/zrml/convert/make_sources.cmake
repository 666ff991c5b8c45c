# The sample and the edge cases, in WORK.
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
execute_process(COMMAND ${MAKE_SAMPLE} ${WORK}/sample.raw COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${MAKE_EDGE_CASES} ${WORK} COMMAND_ERROR_IS_FATAL ANY)
