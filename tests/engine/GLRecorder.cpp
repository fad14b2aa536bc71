#include "tests/engine/GLRecorder.h"

#include <SDL_image.h>
#include <SDL_opengl.h>
#include <SDL_ttf.h>

#include <cstdio>
#include <fstream>
#include <regex>
#include <sstream>

GLRecorder glRecorder;

void GLRecorder::deliver(int bytesPerPixel, unsigned int redMask, int width, int height)
{
    format.BytesPerPixel = static_cast<Uint8>(bytesPerPixel);
    format.Rmask = redMask;
    surface.format = &format;
    surface.w = width;
    surface.h = height;
}

std::string GLRecorder::take(const std::string& pattern)
{
    std::istringstream lines(std::exchange(calls, ""));
    std::string found;
    for (std::string line; std::getline(lines, line);) {
        found += std::regex_search(line, std::regex(pattern)) ? line + '\n' : "";
    }
    return found;
}

namespace {

template <class... Values>
void record(const char* name, Values... values)
{
    std::ostringstream line;
    line << name;
    ((line << ' ' << values), ...);
    static const std::regex nearlyZero("-?[0-9.]+e-[0-9]+|-0(?= |$)");
    glRecorder.calls += std::regex_replace(line.str(), nearlyZero, "0") + '\n';
}

}  // namespace

std::string golden(const std::string& file)
{
    std::ifstream in(VANTOR_TESTS + file);
    const std::string text(std::istreambuf_iterator<char>(in), {});
    return std::regex_replace(text, std::regex(":\\w+"), "");
}

// One line per function, to be read as a table.
// clang-format off
#define RECORD(f, parameters, ...) void f parameters { record(#f, __VA_ARGS__); }
#define RECORD_0(f) void f() { record(#f); }
#define RECORD_1(f, T) RECORD(f, (T a), a)
#define RECORD_2(f, T) RECORD(f, (T a, T b), a, b)
#define RECORD_3(f, T) RECORD(f, (T a, T b, T c), a, b, c)
#define RECORD_4(f, T) RECORD(f, (T a, T b, T c, T d), a, b, c, d)
#define ANSWER(T, result, f, parameters, ...) T f parameters { record(#f, __VA_ARGS__); return result; }

extern "C" {

RECORD_0(glEnd) RECORD_0(glEndList) RECORD_0(glLoadIdentity) RECORD_0(glPopAttrib) RECORD_0(glPopMatrix)
RECORD_0(glPushMatrix) RECORD_0(SDL_GL_SwapBuffers)
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
RECORD(glLightModelfv, (GLenum a, const GLfloat* v), a, v[0], v[1], v[2], v[3])
RECORD(glLightfv, (GLenum a, GLenum b, const GLfloat* v), a, b, v[0], v[1], v[2], v[3])
RECORD(glMultMatrixf, (const GLfloat* m), m[0], m[1], m[2], m[3], m[4], m[5], m[6], m[7], m[8], m[9], m[10], m[11],
       m[12], m[13], m[14], m[15])
RECORD(glTexImage2D, (GLenum a, GLint b, GLint c, GLsizei w, GLsizei h, GLint border, GLenum d, GLenum e, const void*),
       a, b, c, w, h, border, d, e)
RECORD(gluLookAt, (GLdouble a, GLdouble b, GLdouble c, GLdouble d, GLdouble e, GLdouble f, GLdouble g, GLdouble h,
                   GLdouble i), a, b, c, d, e, f, g, h, i)
void glGenTextures(GLsizei n, GLuint* names) { record("glGenTextures", n); *names = glRecorder.nextName++; }
ANSWER(GLuint, glRecorder.nextName++, glGenLists, (GLsizei n), n)
ANSWER(GLint, 0, gluBuild2DMipmaps, (GLenum a, GLint b, GLsizei w, GLsizei h, GLenum c, GLenum d, const void*),
       a, b, w, h, c, d)
ANSWER(int, glRecorder.sdlInitResult, SDL_Init, (Uint32 flags), flags)
ANSWER(int, 0, SDL_GL_SetAttribute, (SDL_GLattr a, int b), a, b)
ANSWER(SDL_Surface*, glRecorder.delivered(), SDL_SetVideoMode, (int w, int h, int depth, Uint32 flags), w, h, depth, flags)
ANSWER(SDL_Surface*, glRecorder.delivered(), IMG_Load, (const char* path), path)
void SDL_FreeSurface(SDL_Surface*) { record("SDL_FreeSurface"); }
// a pointer that is no real font, never followed
ANSWER(TTF_Font*, reinterpret_cast<TTF_Font*>(glRecorder.delivered()), TTF_OpenFont, (const char* path, int size), size, path)
ANSWER(SDL_Surface*, glRecorder.delivered(), TTF_RenderText_Blended, (TTF_Font*, const char* text, SDL_Color c),
       int{c.r}, int{c.g}, int{c.b}, text)
int TTF_Init() { return 0; }
void SDL_Quit() { record("SDL_Quit"); std::fputs("SDL_Quit\n", stderr); }
char* SDL_GetError() { static char message[] = "no such luck"; return message; }
// clang-format on

int SDL_PollEvent(SDL_Event* event)
{
    record("SDL_PollEvent");
    if (glRecorder.events.empty()) {
        return 0;
    }
    event->type = glRecorder.events.front().first;
    event->key.keysym.sym = static_cast<SDLKey>(glRecorder.events.front().second);
    glRecorder.events.pop_front();
    return 1;
}

Uint8 SDL_GetMouseState(int* x, int* y)
{
    record("SDL_GetMouseState");
    if (x != nullptr && y != nullptr) {
        *x = glRecorder.mouseX;
        *y = glRecorder.mouseY;
    }
    return glRecorder.mouseButtons;
}

}  // extern "C"
