# Commands with 4 to 39 descriptors.
# statuses: 0 1
. "$hostile/lib.bash"
a_command_under -n $((4 + RANDOM % 36))
