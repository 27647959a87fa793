# fish completion for keldra

complete -c keldra -n __fish_use_subcommand -a sources -d 'What can be recorded'
complete -c keldra -n __fish_use_subcommand -a record -d 'Record a display, a window or an area' -f
complete -c keldra -n __fish_use_subcommand -a project -d 'Print the project of a movie'
complete -c keldra -n __fish_use_subcommand -a frame -d 'Compose one frame'
complete -c keldra -n __fish_use_subcommand -a export -d 'Make the finished movie'
complete -c keldra -n __fish_use_subcommand -a loudness -d 'Measure the sound'
complete -c keldra -n __fish_use_subcommand -a waveform -d 'Print the heights of the sound'
complete -c keldra -n __fish_use_subcommand -a telemetry -d 'Print what usage events would send'
complete -c keldra -n __fish_use_subcommand -l open -d 'Open a video'
complete -c keldra -n __fish_use_subcommand -l version
complete -c keldra -l help

complete -c keldra -n '__fish_seen_subcommand_from sources' -l json -d 'As JSON'
complete -c keldra -n '__fish_seen_subcommand_from record' -l display -x -d 'A display'
complete -c keldra -n '__fish_seen_subcommand_from record' -l window -x -d 'A window'
complete -c keldra -n '__fish_seen_subcommand_from record' -l area -x -d 'X,Y,W,H of the desktop'
complete -c keldra -n '__fish_seen_subcommand_from record' -l seconds -x -d 'How long'
complete -c keldra -n '__fish_seen_subcommand_from record' -l quality -x -a 'high medium low'
complete -c keldra -n '__fish_seen_subcommand_from record' -l microphone -d 'With a microphone'
complete -c keldra -n '__fish_seen_subcommand_from record' -l camera -d 'With a camera'
complete -c keldra -n '__fish_seen_subcommand_from record' -l clicks -d 'Show clicks'
complete -c keldra -n '__fish_seen_subcommand_from record' -l click-sound -x -a 'soft classic'
complete -c keldra -n '__fish_seen_subcommand_from record' -l highlight -d 'Highlight the pointer'
complete -c keldra -n '__fish_seen_subcommand_from record' -l output-dir -x -a '(__fish_complete_directories)'
complete -c keldra -n '__fish_seen_subcommand_from frame' -l at -x -d 'Moment in seconds'
complete -c keldra -n '__fish_seen_subcommand_from frame export' -l output -r
complete -c keldra -n '__fish_seen_subcommand_from export' -l canvas -r -d 'Look of the canvas'
complete -c keldra -n '__fish_seen_subcommand_from export' -l encoder -x -a 'auto x264 vaapi nvenc qsv'
complete -c keldra -n '__fish_seen_subcommand_from export' -l quiet -d 'No progress'
complete -c keldra -n '__fish_seen_subcommand_from loudness' -l start -x
complete -c keldra -n '__fish_seen_subcommand_from loudness' -l duration -x
complete -c keldra -n '__fish_seen_subcommand_from waveform' -l buckets -x
complete -c keldra -n '__fish_seen_subcommand_from telemetry' -l show
