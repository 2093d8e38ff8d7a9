# A printer made of software for scripts to print on. Sourced.
#
#   printer_start PROGRAM FOLDER OPTION...   starts it and waits until it listens; $printer_place is the port or path
#   printer_tell COMMAND                     a command of its operator
#   printer_stop                             has it save its paper and end; its exit status
#
# Its log is FOLDER/printer.log. Commands go in through a fifo, so that the printer ends when told to, or with the
# script.

printer_start() {
    local program=$1
    printer_folder=$2
    shift 2
    rm -f "$printer_folder"/{printer.log,port,commands}
    mkfifo "$printer_folder/commands"
    "$program" "$@" --port-file "$printer_folder/port" <"$printer_folder/commands" >"$printer_folder/printer.log" &
    printer_process=$!
    exec 3>"$printer_folder/commands"
    trap printer_stop EXIT
    until [[ -s $printer_folder/port ]]; do
        kill -0 $printer_process 2>/dev/null || { echo "the printer did not start" >&2; exit 1; }
        read -rt 0.05 <> <(:) || true
    done
    printer_place=$(<"$printer_folder/port")
}

printer_tell() {
    echo "$1" >&3
}

printer_stop() {
    local status=0
    trap - EXIT
    printer_tell save
    printer_tell quit
    exec 3>&-
    wait $printer_process || status=$?
    rm -f "$printer_folder"/{commands,port}
    return $status
}
