# A signal while a run waits for its patch from a pipe.
# statuses: 129 130 143
. "$hostile/lib.bash"
mkfifo pipe
"${background[@]}" run --patch pipe &
a_moment
end_by "$(pick INT TERM HUP)" $!
