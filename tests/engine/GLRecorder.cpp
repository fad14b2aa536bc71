#include "tests/engine/GLRecorder.h"

#include <SDL.h>
#include <SDL_image.h>
#include <SDL_opengl.h>
#include <SDL_ttf.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iomanip>
#include <iterator>
#include <sstream>
#include <utility>

GLRecorder glRecorder;

bool operator==(const Call& a, const Call& b)
{
    const auto near = [](double x, double y) { return std::abs(x - y) <= 1e-6 * std::max(1.0, std::abs(y)); };
    return a.name == b.name && a.text == b.text &&
           std::equal(a.values.begin(), a.values.end(), b.values.begin(), b.values.end(), near);
}

std::ostream& operator<<(std::ostream& out, const Call& call)
{
    out << call.name << "(" << call.text;
    for (const double value : call.values) {
        out << " " << value;
    }
    return out << ")";
}

FakeImage::FakeImage(int bytesPerPixel, unsigned int redMask, int width, int height)
{
    format.BytesPerPixel = static_cast<Uint8>(bytesPerPixel);
    format.Rmask = redMask;
    surface.format = &format;
    surface.w = width;
    surface.h = height;
}

void GLRecorder::reset()
{
    *this = GLRecorder();
}

Calls GLRecorder::take()
{
    return std::exchange(calls, {});
}

Calls GLRecorder::named(const std::string& name) const
{
    Calls found;
    std::copy_if(calls.begin(), calls.end(), std::back_inserter(found),
                 [&](const Call& made) { return made.name == name; });
    return found;
}

namespace {

// clang-format off
#define NAMED(constant) {#constant, static_cast<double>(constant)}
const std::map<std::string, double> constants = {
    NAMED(GL_BGR), NAMED(GL_BGRA), NAMED(GL_BLEND), NAMED(GL_COLOR_MATERIAL), NAMED(GL_COMPILE),
    NAMED(GL_DEPTH_TEST), NAMED(GL_DIFFUSE), NAMED(GL_ENABLE_BIT), NAMED(GL_LESS), NAMED(GL_LIGHT0),
    NAMED(GL_LIGHT1), NAMED(GL_LIGHTING), NAMED(GL_LIGHT_MODEL_AMBIENT), NAMED(GL_LINEAR), NAMED(GL_MODELVIEW),
    NAMED(GL_ONE_MINUS_SRC_ALPHA), NAMED(GL_POSITION), NAMED(GL_PROJECTION), NAMED(GL_QUADS), NAMED(GL_RGB),
    NAMED(GL_RGBA), NAMED(GL_SRC_ALPHA), NAMED(GL_TEXTURE_2D), NAMED(GL_TEXTURE_MAG_FILTER),
    NAMED(GL_TEXTURE_MIN_FILTER), NAMED(GL_TRIANGLES), NAMED(GL_UNSIGNED_BYTE), NAMED(SDL_GL_DEPTH_SIZE),
    NAMED(SDL_GL_DOUBLEBUFFER), NAMED(SDL_OPENGL)};
// clang-format on

double valueOf(const std::string& word)
{
    const auto constant = constants.find(word);
    return constant == constants.end() ? std::stod(word) : constant->second;
}

Call parsed(const std::string& statement)
{
    std::istringstream words(statement);
    Call result;
    words >> result.name;
    while (words >> std::ws && words.peek() != EOF) {
        std::string word;
        if (words.peek() == '"') {
            words >> std::quoted(result.text);
        } else if (words >> word) {
            result.values.push_back(valueOf(word));
        }
    }
    return result;
}

Calls parsedScript(const std::string& script)
{
    Calls expected;
    std::istringstream statements(script);
    for (std::string statement; std::getline(statements, statement, ';');) {
        expected.push_back(parsed(statement));
    }
    return expected;
}

}  // namespace

testing::AssertionResult recordedExactly(const std::string& script)
{
    Calls expected = parsedScript(script);
    Calls actual = glRecorder.take();
    const Call nothing = call("(end)");
    expected.resize(std::max(expected.size(), actual.size()), nothing);
    actual.resize(expected.size(), nothing);
    for (std::size_t i = 0; i < expected.size(); ++i) {
        if (actual[i] != expected[i]) {
            return testing::AssertionFailure()
                   << "call " << i << " is " << actual[i] << ", not " << expected[i];
        }
    }
    return testing::AssertionSuccess();
}

SDL_Event keyEvent(Uint8 type, SDLKey symbol)
{
    SDL_Event event = {};
    event.type = type;
    event.key.keysym.sym = symbol;
    return event;
}

namespace {

Call withArray(const char* name, std::vector<double> first, const float* numbers, int count)
{
    first.insert(first.end(), numbers, numbers + count);
    return {name, std::move(first), ""};
}

SDL_Surface* surfaceOf(FakeImage* image)
{
    return image == nullptr ? nullptr : &image->surface;
}

}  // namespace

// One line per function, to be read as a table.
// clang-format off
#define RECORD_0(f)    void f() { glRecorder.record(call(#f)); }
#define RECORD_1(f, T) void f(T a) { glRecorder.record(call(#f, a)); }
#define RECORD_2(f, T) void f(T a, T b) { glRecorder.record(call(#f, a, b)); }
#define RECORD_3(f, T) void f(T a, T b, T c) { glRecorder.record(call(#f, a, b, c)); }
#define RECORD_4(f, T) void f(T a, T b, T c, T d) { glRecorder.record(call(#f, a, b, c, d)); }
#define RECORD(f, parameters, ...) void f parameters { glRecorder.record(call(#f, __VA_ARGS__)); }
#define RECORD_AND_RETURN(T, result, f, parameters, ...) \
    T f parameters { glRecorder.record(__VA_ARGS__); return result; }

extern "C" {

RECORD_0(glEnd) RECORD_0(glEndList) RECORD_0(glLoadIdentity) RECORD_0(glPopAttrib) RECORD_0(glPopMatrix)
RECORD_0(glPushMatrix) RECORD_0(SDL_GL_SwapBuffers) RECORD_0(SDL_Quit)
RECORD_1(glBegin, GLenum) RECORD_1(glCallList, GLuint) RECORD_1(glClear, GLbitfield) RECORD_1(glDepthFunc, GLenum)
RECORD_1(glDisable, GLenum) RECORD_1(glEnable, GLenum) RECORD_1(glMatrixMode, GLenum)
RECORD_1(glPushAttrib, GLbitfield)
RECORD_2(glBindTexture, GLuint) RECORD_2(glBlendFunc, GLenum) RECORD_2(glNewList, GLuint)
RECORD_2(glTexCoord2d, GLdouble) RECORD_2(glTexCoord2f, GLfloat) RECORD_2(SDL_WarpMouse, Uint16)
RECORD_3(glColor3f, GLfloat) RECORD_3(glNormal3f, GLfloat) RECORD_3(glScalef, GLfloat)
RECORD_3(glTranslatef, GLfloat) RECORD_3(glVertex3d, GLdouble) RECORD_3(glVertex3f, GLfloat)
RECORD_4(glClearColor, GLfloat) RECORD_4(glColor4f, GLfloat) RECORD_4(glRotatef, GLfloat)
RECORD_4(glViewport, GLint) RECORD_4(gluOrtho2D, GLdouble) RECORD_4(gluPerspective, GLdouble)
RECORD(glTexParameterf, (GLenum a, GLenum b, GLfloat c), a, b, c)
RECORD(glTexParameteri, (GLenum a, GLenum b, GLint c), a, b, c)
RECORD(glDeleteTextures, (GLsizei n, const GLuint* names), n, *names)
RECORD(glTexImage2D, (GLenum a, GLint b, GLint c, GLsizei w, GLsizei h, GLint border, GLenum d, GLenum e, const void*),
       a, b, c, w, h, border, d, e)
RECORD(gluLookAt, (GLdouble a, GLdouble b, GLdouble c, GLdouble d, GLdouble e, GLdouble f, GLdouble g, GLdouble h,
                   GLdouble i), a, b, c, d, e, f, g, h, i)
void glGenTextures(GLsizei n, GLuint* names) { glRecorder.record(call("glGenTextures", n)); *names = glRecorder.nextName++; }
void glLightModelfv(GLenum a, const GLfloat* v) { glRecorder.record(withArray("glLightModelfv", {1.0 * a}, v, 4)); }
void glLightfv(GLenum a, GLenum b, const GLfloat* v) { glRecorder.record(withArray("glLightfv", {1.0 * a, 1.0 * b}, v, 4)); }
void glMultMatrixf(const GLfloat* m) { glRecorder.record(withArray("glMultMatrixf", {}, m, 16)); }
RECORD_AND_RETURN(GLuint, glRecorder.nextName++, glGenLists, (GLsizei n), call("glGenLists", n))
RECORD_AND_RETURN(GLint, 0, gluBuild2DMipmaps,
                  (GLenum a, GLint b, GLsizei w, GLsizei h, GLenum c, GLenum d, const void*),
                  call("gluBuild2DMipmaps", a, b, w, h, c, d))
RECORD_AND_RETURN(int, glRecorder.sdlInitResult, SDL_Init, (Uint32 flags), call("SDL_Init", flags))
RECORD_AND_RETURN(int, 0, SDL_GL_SetAttribute, (SDL_GLattr a, int b), call("SDL_GL_SetAttribute", a, b))
RECORD_AND_RETURN(SDL_Surface*, surfaceOf(glRecorder.screen), SDL_SetVideoMode, (int w, int h, int depth, Uint32 flags),
                  call("SDL_SetVideoMode", w, h, depth, flags))
void SDL_FreeSurface(SDL_Surface*) { glRecorder.record(call("SDL_FreeSurface")); }
RECORD_AND_RETURN(TTF_Font*, glRecorder.font, TTF_OpenFont, (const char* path, int size), {"TTF_OpenFont", {1.0 * size}, path})
RECORD_AND_RETURN(SDL_Surface*, surfaceOf(glRecorder.renderedText), TTF_RenderText_Blended,
                  (TTF_Font*, const char* text, SDL_Color c),
                  {"TTF_RenderText_Blended", {1.0 * c.r, 1.0 * c.g, 1.0 * c.b}, text})
int TTF_Init() { return 0; }
// clang-format on

char* SDL_GetError()
{
    static char message[] = "no such luck";
    return message;
}

int SDL_PollEvent(SDL_Event* event)
{
    glRecorder.record(call("SDL_PollEvent"));
    if (glRecorder.events.empty()) {
        return 0;
    }
    *event = glRecorder.events.front();
    glRecorder.events.pop_front();
    return 1;
}

Uint8 SDL_GetMouseState(int* x, int* y)
{
    glRecorder.record(call("SDL_GetMouseState"));
    if (x != nullptr && y != nullptr) {
        *x = glRecorder.mouseX;
        *y = glRecorder.mouseY;
    }
    return glRecorder.mouseButtons;
}

SDL_Surface* IMG_Load(const char* path)
{
    glRecorder.record({"IMG_Load", {}, path});
    const std::string file(path);
    const auto image = glRecorder.images.find(file.substr(file.rfind('/') + 1));
    return image == glRecorder.images.end() ? nullptr : surfaceOf(image->second);
}

}  // extern "C"
