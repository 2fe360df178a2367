# SPDX-License-Identifier: MIT
# fish completion for qps

set -l commands sheets info text csv json html xlsx items
set -l before "not __fish_seen_subcommand_from $commands help"
set -l after "__fish_seen_subcommand_from $commands"
set -l rows '__fish_seen_subcommand_from csv text'
set -l csv '__fish_seen_subcommand_from csv'

complete -c qps -f -n "$before" -a sheets -d 'List the worksheets'
complete -c qps -f -n "$before" -a info -d 'Describe the notebook'
complete -c qps -f -n "$before" -a text -d 'Print rows as lines and columns between tabs'
complete -c qps -f -n "$before" -a csv -d 'Print comma-separated values'
complete -c qps -f -n "$before" -a json -d 'Print JSON Lines'
complete -c qps -f -n "$before" -a html -d 'Print an HTML page'
complete -c qps -f -n "$before" -a xlsx -d 'Write a spreadsheet workbook'
complete -c qps -f -n "$before" -a items -d 'Print every item with its raw fields'
complete -c qps -f -n "$before" -a help -d 'Print help and exit'
complete -c qps -f -n "__fish_seen_subcommand_from help; and not $after" -a "$commands"
complete -c qps -n "$before" -s V -l version -d 'Print the version and exit'
complete -c qps -s h -l help -d 'Print help and exit'

complete -c qps -n "$after" -x -s s -l sheet -d 'Only this worksheet'
complete -c qps -n "$after" -r -F -l files0-from -d 'Read the names of the files from a file'
complete -c qps -n "$after" -x -l output-dir -a '(__fish_complete_directories)' -d 'Write files in a folder'
complete -c qps -n "$after" -x -l base -a '(__fish_complete_directories)' -d 'Cut off the front of names of output'
complete -c qps -n "$after" -l skip-existing -d 'Leave out what is there already'
complete -c qps -n "$after" -l overwrite -d 'Replace files that have other content'
complete -c qps -n "$after" -r -F -l manifest -d 'Write a line of JSON for each notebook'
complete -c qps -n "$after" -x -l shard -d 'Only the K-th of every N files'
complete -c qps -n "$after" -x -l encoding -a 'windows-1250 windows-1251 windows-1252 windows-1253 windows-1254 CP437 CP850 CP852 CP866 CP932' -d 'The character set of the notebook'
complete -c qps -n "$after" -l strict -d 'Fail where there would be a warning'
complete -c qps -n "$after" -l salvage -d 'Print what can be read of a damaged notebook'
complete -c qps -n "$after" -x -l max-memory -d 'Give up beyond so many bytes'
complete -c qps -n "$after" -x -l max-output -d 'Give up beyond so many bytes of output'
complete -c qps -n "$after" -x -l max-time -d 'Give up beyond so many seconds of the processor'
complete -c qps -n "$after" -l no-sandbox -d 'Keep the powers that are not needed'
complete -c qps -n "$after" -s q -l quiet -d 'No warnings and no progress'

complete -c qps -n "$rows" -l skip-empty -d 'Leave out rows in which nothing shows'
complete -c qps -n "$rows" -l trim -d 'Remove blanks at both ends of each text'
complete -c qps -n "$rows" -l values -d 'What cells hold instead of what they show'
complete -c qps -n "$rows" -x -l hidden -a 'keep skip mark' -d 'Hidden rows and columns'

complete -c qps -n '__fish_seen_subcommand_from xlsx' -r -F -s o -l output -d 'Write this file'

complete -c qps -n '__fish_seen_subcommand_from json' -l no-style -d 'Leave out alignment, colours, borders and fonts'

complete -c qps -n "$csv" -l with-source -d 'File and worksheet in front of each record'
complete -c qps -n "$csv" -x -s d -l delimiter -a tab -d 'Between columns'
complete -c qps -n "$csv" -x -l separator -d 'Between worksheets'
complete -c qps -n "$csv" -l crlf -d 'End lines with CR LF'
complete -c qps -n "$csv" -l bom -d 'Begin with a byte order mark'
complete -c qps -n "$csv" -l csv-safe -d 'Guard texts against being run as formulas'
