# Prints the percentage of the instructions in a callgrind file that ran neither in zlib nor in
# functions that zlib called, such as memcpy.

# The text is "(7) /lib/libz.so.1" at first, and "(7)" later.
function is_zlib(text,    id) {
  match(text, /\([0-9]+\)/)
  id = substr(text, RSTART, RLENGTH)
  if (text ~ /\) /) names[id] = text
  return names[id] ~ /libz\.so/
}

/^ob=/ { in_zlib = is_zlib(substr($0, 4)) }
/^cob=/ { leads_out = !is_zlib(substr($0, 5)) }
/^calls=/ {
  getline  # the total cost of the call
  if (in_zlib && leads_out) zlib += $2
  leads_out = 0
  next
}
/^[-+*0-9]/ {
  all += $2
  if (in_zlib) zlib += $2
}
END { printf "%.1f %%\n", 100 * (all - zlib) / all }
