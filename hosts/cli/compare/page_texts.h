// The files beside this one that a page is made of, as CMake puts them into the program.
#pragma once

namespace vx::cli {

extern const char* const kPageText;     // page.html
extern const char* const kPictureText;  // picture.html
extern const char* const kStyleText;    // style.css
extern const char* const kScriptText;   // script.js

}  // namespace vx::cli
