# What rpcgen makes of a protocol file, for those that compare with it.
find_program(LIBRPC_RPCGEN rpcgen)

# The header, the XDR routines and the stubs of a protocol file, in a folder beside a copy of it; `made`
# lists them. rpcgen names the header as its input is named on the command line, and leaves
# an existing output alone: so it reads the copy, and outputs go first.
function(add_rpcgen protocol folder made)
  get_filename_component(service ${protocol} NAME_WE)
  set(outputs ${folder}/${service}.h ${folder}/${service}_xdr.c ${folder}/${service}_clnt.c)
  add_custom_command(OUTPUT ${outputs}
    COMMAND ${CMAKE_COMMAND} -E copy ${protocol} ${folder}/${service}.x
    COMMAND ${CMAKE_COMMAND} -E rm -f ${outputs}
    COMMAND ${LIBRPC_RPCGEN} -h -o ${service}.h ${service}.x
    COMMAND ${LIBRPC_RPCGEN} -c -o ${service}_xdr.c ${service}.x
    COMMAND ${LIBRPC_RPCGEN} -l -o ${service}_clnt.c ${service}.x
    DEPENDS ${protocol} WORKING_DIRECTORY ${folder}
    COMMENT "Making ${service} with rpcgen" VERBATIM)
  set(${made} ${outputs} PARENT_SCOPE)
endfunction()
