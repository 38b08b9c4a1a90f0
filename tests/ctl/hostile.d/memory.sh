# Commands with 20 to 60 MB of memory.
# statuses: 0 1
. "$hostile/lib.bash"
a_command_under -v $((20000 + RANDOM % 40000)) --outputs 1024 --buffer 65536
