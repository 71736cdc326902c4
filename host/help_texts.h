// What --help tells below the options.
#ifndef KELVO_HOST_HELP_TEXTS_H
#define KELVO_HOST_HELP_TEXTS_H

namespace kelvo::host {

inline constexpr char kOverview[] =
    "Restores the sharpness of photographs that are out of focus or blurred by a straight motion.\n"
    "Reads and writes what libvips does: JPEG, PNG, TIFF, WebP and more, 8 and 16 bit, gray and RGB. Metadata, colour\n"
    "profile and transparency are carried over; a JPEG keeps its quality. No file is replaced unless --force is "
    "given.\n"
    "Exit status: 0 all done, 1 something failed, 2 wrong usage, 130 interrupted.";

inline constexpr char kExamples[] =
    "Examples:\n"
    "  kelvo restore photo.jpg\n"
    "  kelvo restore photo.jpg -o sharp.jpg --width 5\n"
    "  kelvo restore photo.jpg -o sharp.jpg --width 8 --direction 30\n"
    "  kelvo restore -r holiday --output-dir restored --skip-existing\n"
    "  kelvo sheet photo.jpg --widths 2,4,6\n"
    "  kelvo compare photo.jpg sharp.jpg -o page.html\n"
    "  kelvo detect photo.jpg pictures/\n"
    "  kelvo blur sharp.png -o soft.png --width 5\n"
    "  kelvo enlarge small.png -o large.png\n"
    "  kelvo demo pictures\n"
    "kelvo SUBCOMMAND --help tells more about each.";

inline constexpr char kDirectionText[] =
    "With --direction the blur is a motion: a point of light has become a straight line of width + 1 pixels.\n"
    "The direction is counted in degrees, counter-clockwise from the row: at 45 the line joins a pixel with its\n"
    "upper right neighbour, at 90 it is upright, at 135 it goes to the upper left, at 180 it lies along the row.\n"
    "Half a turn more is the same line: 30 and 210 do the same, and 180 stands for 0. Directions are rounded to\n"
    "multiples of 5 degrees, for widths 1 to 4 of 15 degrees.\n"
    "\n";

inline constexpr char kWidthText[] =
    "The width is that of the blur: a point of light has become a disc of so many pixels across.\n";

inline constexpr char kFilesText[] =
    "Of a folder every picture in it counts, with -r those of its folders too. A failure does not stop the rest. Run\n"
    "again with --skip-existing, an interrupted run goes on where it was: a file has its name only when it is "
    "complete.\n"
    "\n";

inline constexpr char kRestoreExamples[] =
    "What is not given is detected over the whole picture, and the result is written beside it: photo-restored.jpg.\n"
    "Where no blur is found nothing is written; with --output, the picture as it is. The width of a motion is not\n"
    "detected. --width auto*0.8 or auto+1 starts from what is found.\n"
    "\n"
    "Examples:\n"
    "  kelvo restore photo.jpg                                               writes photo-restored.jpg\n"
    "  kelvo restore photo.jpg -o sharp.png --width 4\n"
    "  kelvo restore photo.jpg -o sharp.png --width 8 --direction 30         a line of 9 pixels\n"
    "  kelvo restore photo.jpg -o sharp.jpg --width 6 --noise 1 --jpeg 30    noisy, strongly compressed\n"
    "  kelvo restore photo.jpg -o part.png --width 4 --region 800,600,400,300\n"
    "  kelvo restore -r holiday --output-dir restored --skip-existing        a whole tree\n"
    "  kelvo restore -r holiday --output-dir restored --shard 3/8            one of eight jobs\n"
    "  kelvo restore --save-preset phone --width auto*0.8 --noise 1          then: kelvo restore --preset phone *.jpg\n"
    "  kelvo restore other.jpg --like sharp.jpg                              with the settings of that run\n"
    "  kelvo restore scan.tif -o scan.tif --force --width 3 --accuracy 2     in place, with more effort\n"
    "  kelvo restore photo.jpg -o large.png --width 4 --enlarge              twice the columns and rows\n"
    "  kelvo restore --output=-odd-.png --width 3 -- -name-.png              names with a leading dash";

inline constexpr char kBlurExamples[] =
    "Without --output the result is written beside the picture: photo-blurred.jpg.\n"
    "\n"
    "Examples:\n"
    "  kelvo blur sharp.png -o soft.png --width 5\n"
    "  kelvo blur sharp.png -o soft.png --width 8 --direction 30\n"
    "  kelvo blur pictures --output-dir soft --width 12 --threads 2";

inline constexpr char kEnlargeExamples[] =
    "Every pixel becomes 2 x 2; corners and thin diagonal lines are reshaped. The picture prints at its size: the\n"
    "resolution doubles. To restore and enlarge at once: kelvo restore --enlarge. Without --output the result is "
    "written\n"
    "beside the picture: drawing-enlarged.png.\n"
    "\n"
    "Examples:\n"
    "  kelvo enlarge drawing.png -o large.png\n"
    "  kelvo enlarge large.png -o larger.png                                 fourfold in all\n"
    "  kelvo enlarge -r icons --output-dir icons@2x --format png";

inline constexpr char kDetectExamples[] =
    "Prints for each picture the width of its blur (0: sharp), the three widths with most votes, the strength of JPEG\n"
    "compression 0..80, and the column and row phase of the 8 x 8 grid, 0..7. Of a folder every picture in it counts.\n"
    "With --json a list of objects, with the votes of all widths; a file that failed has \"error\".\n"
    "\n"
    "Examples:\n"
    "  kelvo detect photo.jpg\n"
    "  kelvo detect holiday/ scan.tif\n"
    "  kelvo detect --json -r holiday/ > holiday.json";

inline constexpr char kSheetExamples[] =
    "Restores one part of the picture with several settings and writes them side by side, under a label each, beside\n"
    "the part as it is. Without --region the part with most detail is taken.\n"
    "\n"
    "Examples:\n"
    "  kelvo sheet photo.jpg --widths 2,4,6                                  writes photo-sheet.png\n"
    "  kelvo sheet photo.jpg -o lines.png --directions 0,30,60 --width 8\n"
    "  kelvo sheet photo.jpg --widths 3,4,5 --region 800,600,240,240 --accuracy 2";

inline constexpr char kCompareExamples[] =
    "Writes one page that holds both pictures and a slider between them, moved by mouse, touch or the arrow keys. The\n"
    "page needs no network and no other file. Pictures that a browser may not show are put in as PNG.\n"
    "\n"
    "Examples:\n"
    "  kelvo compare photo.jpg photo-restored.jpg -o page.html";

inline constexpr char kDemoExamples[] =
    "Writes sharp.png, blurred.png, restored.png and side-by-side.png.\n"
    "\n"
    "Examples:\n"
    "  kelvo demo pictures\n"
    "  kelvo demo pictures --width 7 --force";

inline constexpr char kMembersExamples[] =
    "The library blurs and restores with one member of a family: a width, and for motion an angle. This prints its\n"
    "margins, weights, operators and iterations.\n"
    "\n"
    "Examples:\n"
    "  kelvo members --width 7 --direction 30\n"
    "  kelvo members --width 12 --json";

}  // namespace kelvo::host

#endif  // KELVO_HOST_HELP_TEXTS_H
