# SPDX-License-Identifier: MIT
# bash completion for qps

_qps() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local command=${COMP_WORDS[1]} i
  local common='--help --sheet --files0-from --output-dir --base --skip-existing --overwrite --manifest
    --shard --encoding --strict --salvage --max-memory --max-output --max-time --no-sandbox --quiet -h -s -q'
  local commands='sheets info text csv json html xlsx items'
  COMPREPLY=()

  if ((COMP_CWORD == 1)); then
    mapfile -t COMPREPLY < <(compgen -W "$commands help --help --version -h -V" -- "$current")
    return
  fi
  if [[ $command == help ]]; then
    ((COMP_CWORD > 2)) || mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$current")
    return
  fi
  case $previous in
    --files0-from | --manifest | --output | -o)
      compopt -o filenames
      mapfile -t COMPREPLY < <(compgen -f -- "$current")
      return
      ;;
    --output-dir | --base)
      compopt -o filenames
      mapfile -t COMPREPLY < <(compgen -d -- "$current")
      return
      ;;
    --encoding)
      mapfile -t COMPREPLY < <(compgen -W 'windows-1250 windows-1251 windows-1252 windows-1253
        windows-1254 CP437 CP850 CP852 CP866 CP932' -- "$current")
      return
      ;;
    --delimiter | -d)
      mapfile -t COMPREPLY < <(compgen -W 'tab' -- "$current")
      return
      ;;
    --hidden)
      mapfile -t COMPREPLY < <(compgen -W 'keep skip mark' -- "$current")
      return
      ;;
    --sheet | -s | --shard | --max-memory | --max-output | --max-time | --separator)
      return
      ;;
  esac
  if [[ $current == -* ]]; then
    case $command in
      csv)
        common+=' --skip-empty --trim --values --hidden --with-source --delimiter --separator --crlf
          --bom --csv-safe -d'
        ;;
      text)
        common+=' --skip-empty --trim --values --hidden'
        ;;
      xlsx)
        common+=' --output -o'
        ;;
      json)
        common+=' --no-style'
        ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "$common" -- "$current")
    return
  fi
  compopt -o filenames
  mapfile -t COMPREPLY < <(compgen -d -- "$current")
  while IFS= read -r i; do
    [[ ${i,,} == *.wb[123] ]] && COMPREPLY+=("$i")
  done < <(compgen -f -- "$current")
}

complete -F _qps qps qpsread
