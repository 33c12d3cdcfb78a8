# shellcheck shell=bash
# What scripts/first-run reads and prints. Functions of text alone.

# Prints the items of the list in the document $1, one line each: number, tab, text.
items_of_list() {
  awk '
    /^## / { inside = $0 == "## The first run on a Mac"; next }
    inside && /^[0-9]+\. / { if (text != "") print text; sub(/\. /, "\t"); text = $0; next }
    inside && /^ +[^ ]/ && text != "" { sub(/^ +/, ""); text = text " " $0 }
    END { if (text != "") print text }
  ' "$1"
}

# Prints the first state of the status item in the texts of standard input.
described_state() {
  local states
  states=$(grep -oE 'iCloud Drive: (idle|uploading|downloading|attention needed|syncing( [0-9][^,]* transfers,)?[^,]*)( [0-9]+%)?') || return 1
  echo "${states%%$'\n'*}"
}

# Prints the command that is missing, or not behind the one before it, in the titles of standard
# input, one line each. Nothing when all are in order.
missing_command() {
  local title commands=("Open iCloud Drive" "Free Up Space…" "About Driftmark" "Check for Updates…"
    "Launch at Login" "Quit Driftmark") next=0
  while IFS= read -r title || [[ -n $title ]]; do
    if ((next < ${#commands[@]})) && [[ $title == "${commands[next]}" ]]; then
      next=$((next + 1))
    fi
  done
  ((next == ${#commands[@]})) || echo "${commands[next]}"
}

# Prints the states that the lines of the system log in standard input report, one line each.
logged_states() {
  sed -n 's/.*Driftmark.*state -> \([a-z]*\)$/\1/p'
}

# Prints the items of standard input (items_of_list) with the results in the file $1: lines with the
# item's number, "done", "part" or "FAILED", and a note. The worst result of an item counts; its notes
# are all printed. Fails when anything has failed.
print_results() {
  awk -F '\t' '
    BEGIN { split("done part FAILED", order, " "); for (i in order) rank[order[i]] = i }
    FILENAME == ARGV[1] {
      if (rank[$2] > rank[result[$1]]) result[$1] = $2
      notes[$1] = notes[$1] "\n            " $3
      next
    }
    {
      state = $1 in result ? result[$1] : "to do"
      ++count[state]
      printf "%2d. %-7s %s%s\n", $1, state, $2, notes[$1]
    }
    END {
      printf "\n%d done, %d in part, %d to do, %d failed.\n", count["done"], count["part"], count["to do"], count["FAILED"]
      exit count["FAILED"] > 0
    }
  ' "$1" -
}
