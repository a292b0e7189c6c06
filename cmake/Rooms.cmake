# The rooms and what each may include, read from the graph in docs/architecture.md: `rooms`, and
# allowed_<room> for each. A line of the graph is "room --> room & room".
file(STRINGS ${ROOT}/docs/architecture.md arrows REGEX "^ +[A-Za-z]+ --> ")
set(rooms platform)
foreach(line IN LISTS arrows)
  string(REGEX MATCHALL "[A-Za-z]+" names "${line}")
  list(POP_FRONT names room)
  list(APPEND rooms ${room})
  set(allowed_${room} ${names})
endforeach()
