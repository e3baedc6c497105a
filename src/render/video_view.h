#pragma once

#include <QOpenGLFunctions>
#include <QOpenGLWidget>

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>

#include "frames/yuv_data.h"
#include "render/picture_geometry.h"
#include "render/video_surface.h"

/// The video surface that draws with OpenGL: textures of the latest frame's planes and a shader.
class KvVideoView : public QOpenGLWidget, protected QOpenGLFunctions, public orvelle::VideoSurface {
    Q_OBJECT
public:
    explicit KvVideoView(QWidget* parent = nullptr);
    ~KvVideoView() override;

    /// Keeps a copy of three planes, as KvYUV420P does, without a repaint. Returns 0. Any thread.
    int setYUV(const uint8_t* const planes[3], int width, int height, const int linesizes[3]);
    /// Keeps the frame, which it now owns (null: none), without a repaint. Returns 0. Any thread.
    int setFrame(KvYUV420P* frame);
    /// setFrame() and updateAsync(). Any thread.
    int showFrame(KvYUV420P* frame);
    /// Requests a repaint, which may share the interface thread's next one with other views. Any
    /// thread.
    void updateAsync();
    /// Drops the frame and repaints.
    void clear();

    int showPicture(const AVFrame& picture) override;
    void showNothing() override { showFrame(nullptr); }
    bool snapshot(const QString& path, const QDateTime& takenAt = {}) override;
    void pictureScale(double* x, double* y) const override;
    orvelle::PictureScale fit() const override;
    QImage grabView() override { return grabFramebuffer(); }

signals:
    /// Repaints this view; may be emitted on any thread.
    void updateAsyncSignal();

protected:
    void initializeGL() override;
    void resizeGL(int width, int height) override;
    void paintGL() override;
    void repaintPicture() override { emit updateAsyncSignal(); }

private:
    using SharedFrame = std::shared_ptr<const KvYUV420P>;

    void keepFrame(SharedFrame frame);
    SharedFrame currentFrame() const;
    void buildProgram();
    GLuint compileShader(GLenum type, const char* source);
    void createTextures();
    void releaseGl();
    void uploadFrame(const SharedFrame& frame);
    void uploadPlane(int unit, int width, int height, const uint8_t* bytes, bool isSameSize);
    void followShrinking(const KvYUV420P& frame, const QRectF& place);
    void drawQuad(const QRectF& place, bool isBlack);

    // Interface thread, with the context current.
    QMetaObject::Connection m_contextConnection;
    GLuint m_program = 0;
    std::array<GLuint, 3> m_textures{};
    GLint m_vertexAttribute = -1;
    GLint m_textureAttribute = -1;
    GLint m_matrixUniform = -1;
    SharedFrame m_uploadedFrame;  ///< what the textures hold
    bool m_hasMipmaps = false;    ///< of that frame
    bool m_usesMipmaps = false;   ///< the textures' filter does

    mutable std::mutex m_mutex;  ///< guards the two below
    SharedFrame m_frame;
    orvelle::PictureScale m_scale;
};
