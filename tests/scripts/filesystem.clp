; Files and directories through the standard package's families. Everything
; is made under fs-work in the working directory and removed at the end.
(create-dir "fs-work/a/b")
(is-dir-exists "fs-work/a/b")
(is-dir-empty "fs-work/a/b")
(open "fs-work/a/one.txt" out "w")
(printout out "hello" crlf)
(close out)
(is-file-exists "fs-work/a/one.txt")
(is-file-exists "fs-work/a")
(is-dir-empty "fs-work/a")

; Copies, with and without overwriting; a rename stays in its directory.
(copy-file "fs-work/a/one.txt" "fs-work/a/two.txt")
(copy-file "fs-work/a/one.txt" "fs-work/a/two.txt")
(copy-file "fs-work/a/one.txt" "fs-work/a/two.txt" FALSE)
(rename-file "fs-work/a/two.txt" "elsewhere/three.txt")
(get-files "fs-work/a")
(get-files "fs-work/a" "t*.txt")
(get-dirs "fs-work")
(move-file "fs-work/a/three.txt" "fs-work/a/b/four.log")
(get-files "fs-work/a/b" "*.log")

; Names taken apart and put together; no file is touched.
(get-file-ext "fs-work/a/b/four.log")
(get-filename "fs-work/a/b/four.log")
(get-file-path "fs-work/a/b/four.log")
(change-file-ext "fs-work/a/b/four.log" ".txt")
(change-file-path "fs-work/a/b/four.log" "other")
(get-parent-dir "fs-work/a/b/")
(get-root-dir "/usr/lib")
(dir-delim)

; Whole directories.
(copy-dir "fs-work/a" "fs-work/copy")
(get-files "fs-work/copy/b")
(move-dir "fs-work/copy" "fs-work/moved")
(is-dir-exists "fs-work/copy")
(delete-dir "fs-work/moved")
(is-dir-exists "fs-work/moved")
(delete-dir "fs-work/moved" TRUE)
(is-dir-exists "fs-work/moved")

; Failures of the file system are errors; nothing else is touched.
(delete-file "fs-work/none.txt")
(get-files "fs-work/none")
(delete-dir "fs-work/a/one.txt")

; The user's paths and the system, by their kinds only.
(stringp (get-home-path))
(stringp (get-documents-path))
(is-dir-exists (get-temp-path))
(stringp (get-os-name))
(stringp (get-os-architecture))
(get-os-platform)
(integerp (get-os-major-version))
(integerp (get-os-minor-version))
(integerp (get-os-build-version))

(delete-file "fs-work/a/one.txt")
(delete-dir "fs-work" TRUE)
(is-dir-exists "fs-work")
