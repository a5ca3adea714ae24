# bash completion for jxfile
_jxfile() {
  local commands='lines convert write bytes truncate info fsinfo ls exists mkdir rm mv cp newname split build expand format detect encodings status version check-host help'
  local encodings='utf-8 utf-16 utf-32 us-ascii utf-16be utf-16le utf-32be utf-32le ibm037 ibm038 native ibm256 ibm273 ibm274 ibm275 ibm277 ibm278 ibm280 ibm281 ibm284 ibm285 ibm290 ibm297 ibm420 ibm423 ibm424 ibm437 ibm500 cp737 cp770 cp771 cp772 cp773 cp774 cp775 ibm803 ibm850 ibm851 ibm852 ibm855 ibm856 ibm857 ibm858 ibm860 ibm861 ibm862 ibm863 ibm864 ibm865 ibm866 ibm868 ibm869 ibm870 ibm871 windows-874 ibm875 ibm880 ibm891 ibm901 ibm902 ibm903 ibm904 ibm905 ibm918 ibm921 ibm922 ibm930 windows-31j ibm933 ibm935 gbk ibm937 ibm939 ibm943 cp949 big5 big5-hkscs ibm1004 ibm1008 ibm1025 ibm1026 ibm1046 ibm1047 hp-roman8 ibm1097 dec-mcs ibm1112 ibm1122 ibm1123 ibm1124 cp1125 ibm1129 ibm1130 ibm1132 ibm1133 ibm1137 ibm1140 ibm1141 ibm1142 ibm1143 ibm1144 ibm1145 ibm1146 ibm1147 ibm1148 ibm1149 ibm1153 ibm1154 ibm1155 ibm1156 ibm1157 ibm1158 ibm1160 ibm1161 ibm1162 ibm1163 ibm1164 ibm1166 ibm1167 windows-1250 windows-1251 windows-1252 windows-1253 windows-1254 windows-1255 windows-1256 windows-1257 windows-1258 johab ibm1364 ibm1371 ibm1388 ibm1390 ibm1399 shift_jis shift_jisx0213 euc-jisx0213 euc-jp-ms tis-620 tcvn viscii koi8-ru koi8-t armscii-8 georgian-academy georgian-ps pt154 rk1048 mik iso-ir-111 win-sami-2 hp-greek8 hp-turkish8 hp-thai8 iso-ir-197 iso-ir-209 mac-sami ansi_x3.110 asmo_449 brf iso646-gb iso646-ca iso646-ca2 csn_369103 cwi iso646-de iso646-dk ebcdic-at-de ebcdic-at-de-a ebcdic-ca-fr ebcdic-dk-no ebcdic-dk-no-a ebcdic-es ebcdic-es-a ebcdic-es-s ebcdic-fi-se ebcdic-fi-se-a ebcdic-fr ebcdic-is-friss ebcdic-it ebcdic-pt ebcdic-uk iso646-es iso646-es2 iso646-cn gost_19768-74 greek-ccitt greek7 greek7-old hp-roman9 ibm866nav iec_p27-1 inis inis-8 inis-cyrillic isiri-3342 iso-2022-jp-2 iso-8859-9e iso_10367-box iso_11548-1 iso_2033 iso_5427 iso_5427-ext iso_5428 iso646-it iso646-jp iso646-jp-ocr-b iso646-yu iso646-kr latin-greek latin-greek-1 iso646-hu nats-dano nats-sefi iso646-cu iso646-fr iso646-fr1 iso646-no iso646-no2 iso646-pt iso646-pt2 iso646-fi iso646-se2 utf-7-imap ebcdic-us iso_6937-2 ibm4517 ibm4899 ibm4909 ibm4971 ibm5347 ibm9030 ibm9066 ibm9448 macintosh x-mac-cyrillic x-mac-ukrainian x-mac-ce x-mac-icelandic ibm12712 ibm16804 t.61 iso_6937 koi8-r koi8-u iso-8859-1 iso-8859-2 iso-8859-3 iso-8859-4 iso-8859-5 iso-8859-6 iso-8859-7 iso-8859-8 iso-8859-9 iso-8859-10 iso-8859-11 iso-8859-13 iso-8859-14 iso-8859-15 iso-8859-16 iso-2022-jp euc-jp gb2312 euc-kr euc-tw gb18030 utf-7'
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  local options='' words='' kind=''
  # --name=value comes as three words.
  [[ $before == '=' ]] && before=${COMP_WORDS[COMP_CWORD - 2]}
  [[ $word == '=' ]] && word=''
  if ((COMP_CWORD == 1)); then
    mapfile -t COMPREPLY < <(compgen -W "$commands --help --version" -- "$word")
    return
  fi
  case ${COMP_WORDS[1]} in
    lines) options='--from --record-length --records --strip-blanks --short-last --direct -n --number --range --mark --json --module --expand --color --help' kind=files ;;
    convert) options='--from --to --bom --no-bom --append --record-length --records --to-records --strip-blanks --short-last --eol --final-eol --on-error --translit --in-place --backup --into --files0-from --jobs --dry-run --module --expand --color --help' kind=files ;;
    write) options='--records --to --bom --append --update --at --record-length --module --expand --color --help' kind=files ;;
    bytes) options='--raw --records --range --record-length --offset --count --json --module --expand --color --help' kind=files ;;
    truncate) options='--module --expand --color --help' kind=files ;;
    info) options='--json --module --expand --color --help' kind=files ;;
    fsinfo) options='--json --module --expand --color --help' kind=files ;;
    ls) options='-a --all -l --long --full --parent --root --home --json --module --expand --color --help' kind=files ;;
    exists) options='--json --module --expand --color --help' kind=files ;;
    mkdir) options='-p --parents --module --expand --color --help' kind=files ;;
    rm) options='-r --recursive -f --force --module --expand --color --help' kind=files ;;
    mv) options='-T --no-target-directory --module --expand --color --help' kind=files ;;
    cp) options='-p --preserve -P --no-dereference -T --no-target-directory --module --expand --color --help' kind=files ;;
    newname) options='--prefix --extension --host --create --count --json --module --expand --color --help' kind=folders ;;
    split) options='--json --module --expand --color --help' kind=files ;;
    build) options='--directory --member --extension --json --module --expand --color --help' kind=none ;;
    expand) options='--json --module --expand --color --help' kind=none ;;
    format) options='--capacity --json --module --expand --color --help' kind=none ;;
    detect) options='--json --module --expand --color --help' kind=files ;;
    encodings) options='--json --module --expand --color --help' kind=words words="$encodings" ;;
    status) options='--json --module --expand --color --help' kind=none ;;
    version) options='--json --module --expand --color --help' kind=none ;;
    check-host) options='--json --tap --module --expand --color --help' kind=folders ;;
    help) options='--module --expand --color --help' kind=words words=$commands ;;
  esac
  [[ $word == -* ]] && kind=words words=$options
  case ${COMP_WORDS[1]}:$before in
    *:--module | convert:--files0-from) kind=files ;;
    convert:--into | build:--directory) kind=folders ;;
    lines:--record-length | lines:--range | convert:--record-length | convert:--backup | convert:--jobs | write:--at | write:--record-length | bytes:--range | bytes:--record-length | bytes:--offset | bytes:--count | newname:--prefix | newname:--extension | newname:--count | build:--member | build:--extension | format:--capacity) kind=none ;;
    lines:--from | convert:--from) kind=words words="$encodings auto" ;;
    convert:--to | write:--to) kind=words words="$encodings" ;;
    convert:--final-eol) kind=words words='add keep' ;;
    *:--color) kind=words words='auto always never' ;;
    bytes:--records) kind=words words='binary fixed: rdw bdw be32 le32' ;;
    convert:--eol) kind=words words='lf crlf cr nel keep' ;;
    convert:--to-records) kind=words words='lines fixed: rdw bdw be32 le32' ;;
    lines:--short-last | convert:--short-last) kind=words words='refuse pad keep' ;;
    convert:--on-error) kind=words words='replace skip escape stop' ;;
    convert:--records) kind=words words='stream text fixed: rdw bdw be32 le32' ;;
    write:--records) kind=words words='text binary stream fixed: rdw bdw be32 le32' ;;
    lines:--records) kind=words words='text fixed: rdw bdw be32 le32' ;;
  esac
  case $kind in
    words) mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word") ;;
    none) COMPREPLY=() ;;
    *)
      compopt -o filenames 2>/dev/null
      [[ $kind == folders ]] && kind=-d || kind=-f
      mapfile -t COMPREPLY < <(compgen "$kind" -- "$word")
      ;;
  esac
}
complete -F _jxfile jxfile
