# bash completion for keldra

_keldra() {
    local cur prev words cword
    _init_completion || return

    local commands="sources record project frame export loudness waveform telemetry"
    local command=${words[1]}
    if [ "$cword" -eq 1 ]; then
        COMPREPLY=($(compgen -W "$commands --open --version --help" -- "$cur"))
        _filedir '@(mov|mp4|m4v)'
        return
    fi

    case $prev in
    --quality) COMPREPLY=($(compgen -W "high medium low" -- "$cur")); return ;;
    --click-sound) COMPREPLY=($(compgen -W "soft classic" -- "$cur")); return ;;
    --encoder) COMPREPLY=($(compgen -W "auto x264 vaapi nvenc qsv" -- "$cur")); return ;;
    --output-dir) _filedir -d; return ;;
    --output | --canvas) _filedir; return ;;
    --display | --window | --area | --seconds | --at | --start | --duration | --buckets) return ;;
    esac

    local options=
    case $command in
    sources) options="--json" ;;
    record) options="--display --window --area --seconds --quality --microphone --camera --clicks --click-sound --highlight --output-dir" ;;
    frame) options="--at --output" ;;
    export) options="--output --canvas --encoder --quiet" ;;
    loudness) options="--start --duration" ;;
    waveform) options="--buckets" ;;
    telemetry) options="--show" ;;
    esac
    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W "$options --help" -- "$cur"))
        return
    fi
    case $command in
    project | frame | export | loudness | waveform) _filedir '@(mov|mp4|m4v|json)' ;;
    esac
}
complete -F _keldra keldra
